#include "platform/number_format.h"

#include <charconv>
#include <cmath>

namespace obolo {

std::string ShortestDecimal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  char buffer[64];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  std::string text(buffer, error == std::errc() ? end : buffer);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

}  // namespace obolo
