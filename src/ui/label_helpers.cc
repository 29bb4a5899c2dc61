#include "ui/label_helpers.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <limits>
#include <string>

#include "platform/log.h"

namespace obolo {
namespace {

// The full lower-case mapping of the root locale, as the platform lower-cases a
// string (the Kelvin sign becomes "k", "İ" becomes "i" with a combining dot).
std::string Lowercased(std::string_view text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) return std::string(text);
  icu::UnicodeString unicode =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  std::string lowered;
  unicode.toLower(icu::Locale::getRoot()).toUTF8String(lowered);
  return lowered;
}

}  // namespace

void replace(UILabel& label, std::string_view text) {
  LogLine(text);
  if (Lowercased(text) == kInsufficientFundsMessage) {
    label.setText(std::string(text) + " Please check your mail.");
  } else {
    label.setText(std::string(text));
  }
}

}  // namespace obolo
