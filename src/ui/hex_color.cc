#include "ui/hex_color.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace obolo {
namespace {

// The platform's standard grey: white level 0.5, opaque.
constexpr ColorComponents kGrey{0.5, 0.5, 0.5, 1.0};

// ICU's White_Space property is the platform's whitespace-and-newlines set:
// the space separators, U+2028, U+2029, U+0009-U+000D and U+0085.
bool IsWhitespaceOrNewline(UChar32 c) { return u_isUWhiteSpace(c) != 0; }

icu::UnicodeString Trimmed(const icu::UnicodeString& text) {
  int32_t start = 0;
  int32_t end = text.length();
  while (start < end && IsWhitespaceOrNewline(text.char32At(start))) start = text.moveIndex32(start, 1);
  while (end > start && IsWhitespaceOrNewline(text.char32At(text.moveIndex32(end, -1)))) {
    end = text.moveIndex32(end, -1);
  }
  return icu::UnicodeString(text, start, end - start);
}

// User-perceived characters: ICU's extended grapheme clusters. When ICU cannot
// make the iterator (its data missing), the count is of code points, which
// still tells six ASCII digits from anything else.
std::int32_t CountGraphemes(const icu::UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status) || !characters) return text.countChar32();
  characters->setText(text);
  std::int32_t count = 0;
  for (characters->first(); characters->next() != icu::BreakIterator::DONE;) ++count;
  return count;
}

int HexDigitValue(UChar32 c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
  return -1;
}

// The platform scanner's scanHexLongLong over the whole text, reporting 0
// where the scan fails (the caller never looks at success).
std::uint64_t ScanHex(const icu::UnicodeString& text) {
  int32_t i = 0;
  while (i < text.length() && IsWhitespaceOrNewline(text.char32At(i))) i = text.moveIndex32(i, 1);
  if (i + 1 < text.length() && text[i] == u'0' && (text[i + 1] == u'X' || text[i + 1] == u'x')) i += 2;
  std::uint64_t value = 0;
  for (; i < text.length(); ++i) {
    const int digit = HexDigitValue(text[i]);
    if (digit < 0) break;
    value = (value << 4) | static_cast<std::uint64_t>(digit);  // six digits never overflow
  }
  return value;
}

}  // namespace

ColorComponents HexColorComponents(std::string_view hex) {
  // fromUTF8 repairs an ill-formed sequence to U+FFFD, as the platform does
  // when it makes a string; toUpper with the root locale is the full mapping.
  // A text beyond ICU's 32-bit lengths is not six characters either.
  if (hex.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) return kGrey;
  icu::UnicodeString text =
      Trimmed(icu::UnicodeString::fromUTF8(icu::StringPiece(hex.data(), static_cast<int32_t>(hex.size()))));
  text.toUpper(icu::Locale::getRoot());
  if (!text.isEmpty() && text.charAt(0) == u'#') text.remove(0, 1);
  if (CountGraphemes(text) != 6) return kGrey;
  const std::uint64_t value = ScanHex(text);
  return {static_cast<double>((value >> 16) & 0xFF) / 255.0, static_cast<double>((value >> 8) & 0xFF) / 255.0,
          static_cast<double>(value & 0xFF) / 255.0, 1.0};
}

UIColor hexStringToUIColor(std::string_view hex) {
  const ColorComponents c = HexColorComponents(hex);
  return UIColor(c.red, c.green, c.blue, c.alpha);
}

}  // namespace obolo
