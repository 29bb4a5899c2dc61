// Text with attributes over ranges of it: what an attributed button title or
// label text carries.
//
// Ranges count bytes of the UTF-8 text. Attributes are kept in the order they
// were added; where two of the same key cover a position, the later one wins.

#ifndef OBOLO_TOOLKIT_ATTRIBUTED_STRING_H_
#define OBOLO_TOOLKIT_ATTRIBUTED_STRING_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "toolkit/ui_color.h"

namespace obolo {

// The attributes the kit sets: text colour, underline colour, underline style.
enum class NSAttributedStringKey { foregroundColor, underlineColor, underlineStyle };

// The platform's underline styles (raw values).
enum class NSUnderlineStyle : int { none = 0, single = 1, thick = 2, doubleLine = 9 };

// An attribute's value: a colour or an underline style.
using NSAttributeValue = std::variant<UIColor, NSUnderlineStyle>;

// A stretch of the text: first byte and number of bytes.
struct NSRange {
  std::size_t location = 0;  // the first byte
  std::size_t length = 0;    // bytes
  friend bool operator==(const NSRange&, const NSRange&) = default;
};

// The text and its attributes.
class NSAttributedString {
 public:
  // One attribute: which, its value, and the stretch it covers.
  struct Attribute {
    NSAttributedStringKey key;  // which attribute
    NSAttributeValue value;  // of the type the key takes
    NSRange range;  // the stretch it covers
  };

  // Empty, or the given text without attributes.
  NSAttributedString() = default;
  explicit NSAttributedString(std::string string) : string_(std::move(string)) {}

  // The text, and its length in bytes.
  const std::string& string() const { return string_; }
  std::size_t length() const { return string_.size(); }

  // Adds an attribute over `range` (clamped to the text), or over the whole text.
  void addAttribute(NSAttributedStringKey key, NSAttributeValue value, NSRange range);
  void addAttribute(NSAttributedStringKey key, NSAttributeValue value) {
    addAttribute(key, std::move(value), NSRange{0, length()});
  }

  // Every attribute, in the order added.
  const std::vector<Attribute>& attributes() const { return attributes_; }

  // The value of `key` at byte `index`, if any attribute covers it.
  std::optional<NSAttributeValue> attribute(NSAttributedStringKey key, std::size_t index) const;
  // The value of `key` when one attribute of that key covers the whole text.
  std::optional<NSAttributeValue> attributeOverWholeText(NSAttributedStringKey key) const;

 private:
  std::string string_;
  std::vector<Attribute> attributes_;
};

// Mutable and immutable are one type here; the name keeps screen code in the
// platform's words.
using NSMutableAttributedString = NSAttributedString;

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_ATTRIBUTED_STRING_H_
