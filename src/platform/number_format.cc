#include "platform/number_format.h"

#include <charconv>
#include <cmath>

namespace obolo {
namespace {

std::string Chars(double value, std::chars_format format) {
  char buffer[400];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value, format);
  return error == std::errc() ? std::string(buffer, end) : std::string();
}

}  // namespace

std::string ShortestDecimal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  const double magnitude = std::fabs(value);
  if (magnitude != 0 && (magnitude < 1e-4 || magnitude >= 1e16)) {
    return Chars(value, std::chars_format::scientific);  // "1e-05", "1.5e+16"
  }
  std::string text = Chars(value, std::chars_format::fixed);
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

}  // namespace obolo
