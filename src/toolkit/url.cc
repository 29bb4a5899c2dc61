#include "toolkit/url.h"

#include <algorithm>
#include <cctype>
#include <ostream>

#include "platform/url.h"

namespace obolo {
namespace {

// The scheme's length, or 0 when the text does not start with "scheme:".
std::size_t SchemeLength(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == 0 || colon == std::string_view::npos) return 0;
  if (text.substr(0, colon).find_first_of("/?#") != std::string_view::npos) return 0;
  if (std::isalpha(static_cast<unsigned char>(text[0])) == 0) return 0;
  for (char c : text.substr(0, colon)) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '+' && c != '-' && c != '.') return 0;
  }
  return colon;
}

}  // namespace

std::optional<URL> URL::fromString(std::string_view text) {
  if (!IsValidUrl(text) || std::count(text.begin(), text.end(), '#') > 1) return std::nullopt;
  return URL(std::string(text));
}

std::string URL::scheme() const {
  std::string scheme = text_.substr(0, SchemeLength(text_));
  std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return scheme;
}

std::string URL::host() const {
  std::string_view rest(text_);
  const std::size_t scheme = SchemeLength(rest);
  rest.remove_prefix(scheme == 0 ? 0 : scheme + 1);
  if (!rest.starts_with("//")) return "";
  rest.remove_prefix(2);
  rest = rest.substr(0, rest.find_first_of("/?#"));
  if (auto at = rest.rfind('@'); at != std::string_view::npos) rest.remove_prefix(at + 1);
  if (rest.starts_with('[')) return std::string(rest.substr(0, rest.find(']') + 1));
  return std::string(rest.substr(0, rest.find(':')));
}

std::ostream& operator<<(std::ostream& out, const URL& url) { return out << url.absoluteString(); }

}  // namespace obolo
