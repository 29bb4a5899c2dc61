// Any text offered as an address (the host's logo address, a configured
// origin, a page the web view shows): the platform's check and the toolkit's
// URL agree on what is one, and what a URL says of itself (scheme, host, port,
// origin) is consistent, and its origin reads back the same from its own text.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/url.h"
#include "toolkit/url.h"
#include "toolkit/wk_frame_info.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const bool valid = obolo::IsValidUrl(text);
  const auto url = obolo::URL::fromString(text);
  // The toolkit's URL is the platform's check plus "at most one #".
  Check(url.has_value() == (valid && std::count(text.begin(), text.end(), '#') <= 1));
  if (!url) return 0;
  Check(url->absoluteString() == text);

  const std::string scheme = url->scheme();
  if (!scheme.empty()) {
    Check(text.size() > scheme.size() && text[scheme.size()] == ':');
    Check(Lower(std::string(text.substr(0, scheme.size()))) == scheme);
  }
  const std::string host = url->host();
  Check(host.empty() || text.find(host) != std::string_view::npos);
  const auto port = url->port();
  Check(!port || (url->hasPortPart() && *port >= 0 && *port <= 65535));

  const obolo::WKSecurityOrigin origin = obolo::WKSecurityOrigin::of(*url);
  if (origin.isOpaque()) {
    Check(origin == obolo::WKSecurityOrigin{});
    Check(!origin.isSameOrigin(origin));
    return 0;
  }
  Check(origin.protocol == scheme && origin.host == Lower(host));
  Check(origin.isSameOrigin(origin));
  // The origin written out as an address is an address of the same origin.
  std::string written = origin.protocol + "://" + origin.host;
  if (origin.port != 0) written += ":" + std::to_string(origin.port);
  const auto again = obolo::URL::fromString(written + "/");
  Check(again.has_value());
  Check(obolo::WKSecurityOrigin::of(*again) == origin);
  return 0;
}
