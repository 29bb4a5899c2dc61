#include "ui/hex_color.h"

#include <cstdint>
#include <vector>

#include "ui/unicode_text.h"

namespace obolo {
namespace {

int HexDigitValue(char32_t c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
  return -1;
}

// The platform scanner's scanHexLongLong over the whole text, reporting 0
// where the scan fails (the caller never looks at success).
std::uint64_t ScanHex(const std::vector<char32_t>& text) {
  std::size_t i = 0;
  while (i < text.size() && IsWhitespaceOrNewline(text[i])) ++i;
  if (i + 1 < text.size() && text[i] == '0' && (text[i + 1] == 'X' || text[i + 1] == 'x')) i += 2;
  std::uint64_t value = 0;
  for (; i < text.size(); ++i) {
    const int digit = HexDigitValue(text[i]);
    if (digit < 0) break;
    value = (value << 4) | static_cast<std::uint64_t>(digit);  // six digits never overflow
  }
  return value;
}

}  // namespace

ColorComponents HexColorComponents(std::string_view hex) {
  std::vector<char32_t> text = UppercaseFull(TrimWhitespaceAndNewlines(DecodeUtf8(hex)));
  if (!text.empty() && text.front() == '#') text.erase(text.begin());
  if (CountGraphemes(text) != 6) return {0.5, 0.5, 0.5, 1.0};
  const std::uint64_t value = ScanHex(text);
  return {static_cast<double>((value >> 16) & 0xFF) / 255.0, static_cast<double>((value >> 8) & 0xFF) / 255.0,
          static_cast<double>(value & 0xFF) / 255.0, 1.0};
}

UIColor hexStringToUIColor(std::string_view hex) {
  const ColorComponents c = HexColorComponents(hex);
  return UIColor(c.red, c.green, c.blue, c.alpha);
}

}  // namespace obolo
