#include "toolkit/wk_frame_info.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace obolo {
namespace {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The port as the platform reports it: 0 for the scheme's default.
int ReportedPort(std::string_view protocol, int port) {
  if ((protocol == "https" && port == 443) || (protocol == "http" && port == 80)) return 0;
  return port;
}

}  // namespace

WKSecurityOrigin WKSecurityOrigin::of(const URL& url) {
  WKSecurityOrigin origin{url.scheme(), Lower(url.host()), 0};
  const std::optional<int> port = url.port();
  // No page loads from an address whose port cannot be read.
  if (origin.isOpaque() || (url.hasPortPart() && !port)) return {};
  origin.port = ReportedPort(origin.protocol, port.value_or(0));
  return origin;
}

bool WKSecurityOrigin::isSameOrigin(const WKSecurityOrigin& other) const {
  if (isOpaque() || other.isOpaque()) return false;
  const std::string mine = Lower(protocol);
  const std::string theirs = Lower(other.protocol);
  return mine == theirs && Lower(host) == Lower(other.host) &&
         ReportedPort(mine, port) == ReportedPort(theirs, other.port);
}

}  // namespace obolo
