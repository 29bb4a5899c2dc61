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

// The "host:port" part of an address with an authority, without user
// information; none for an address without an authority.
std::optional<std::string_view> HostAndPort(std::string_view text) {
  const std::size_t scheme = SchemeLength(text);
  text.remove_prefix(scheme == 0 ? 0 : scheme + 1);
  if (!text.starts_with("//")) return std::nullopt;
  text.remove_prefix(2);
  text = text.substr(0, text.find_first_of("/?#"));
  if (auto at = text.rfind('@'); at != std::string_view::npos) text.remove_prefix(at + 1);
  return text;
}

// The length of the host at the start of `authority`: up to the "]" of an
// IPv6 literal, else up to the first ":".
std::size_t HostLength(std::string_view authority) {
  if (authority.starts_with('[')) {
    const std::size_t close = authority.find(']');
    return close == std::string_view::npos ? 0 : close + 1;  // no host without its "]"
  }
  return std::min(authority.find(':'), authority.size());
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
  const auto authority = HostAndPort(text_);
  if (!authority) return "";
  return std::string(authority->substr(0, HostLength(*authority)));
}

bool URL::hasPortPart() const {
  const auto authority = HostAndPort(text_);
  return authority && authority->substr(HostLength(*authority)).starts_with(':');
}

std::optional<int> URL::port() const {
  if (!hasPortPart()) return std::nullopt;
  const auto authority = HostAndPort(text_);
  std::string_view rest = authority->substr(HostLength(*authority) + 1);
  if (rest.empty() || rest.size() > 5) return std::nullopt;
  int port = 0;
  for (char c : rest) {
    if (std::isdigit(static_cast<unsigned char>(c)) == 0) return std::nullopt;
    port = port * 10 + (c - '0');
  }
  if (port > 65535) return std::nullopt;
  return port;
}

std::ostream& operator<<(std::ostream& out, const URL& url) { return out << url.absoluteString(); }

}  // namespace obolo
