#include "platform/url.h"

#include <cctype>

namespace obolo {

bool IsValidUrl(std::string_view text) {
  if (text.empty()) return false;
  constexpr std::string_view kAllowed = "-._~:/?#[]@!$&'()*+,;=";
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (std::isalnum(c) || kAllowed.find(static_cast<char>(c)) != std::string_view::npos) continue;
    if (c == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
        std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
      i += 2;
      continue;
    }
    return false;
  }
  return true;
}

}  // namespace obolo
