// Which frame of a web page a script message came from, and that frame's
// origin, as the platform reports them with every script message.
//
// A handler that trusts only its own page checks both: a page can embed frames
// from anywhere, and the web view can be navigated away from the page it first
// loaded (a link, a script, a server's redirect).

#ifndef OBOLO_TOOLKIT_WK_FRAME_INFO_H_
#define OBOLO_TOOLKIT_WK_FRAME_INFO_H_

#include <string>

#include "toolkit/url.h"

namespace obolo {

// Where a frame's content came from: scheme ("https"), host and port, the port
// 0 when it is the scheme's default, as the platform reports it. A page with
// no such origin (a data: or about:blank page) has an opaque origin: an empty
// protocol and host.
struct WKSecurityOrigin {
  std::string protocol;  // "https", lower case
  std::string host;      // lower case
  int port = 0;          // 0 for the scheme's default

  // The origin of a page loaded from `url`: its scheme and host in lower case,
  // its port (0 when it names none or the scheme's default, 80 for http and
  // 443 for https). An address without a host, or with a port that is not a
  // port number, gives an opaque origin.
  static WKSecurityOrigin of(const URL& url);

  // An opaque origin is the same as no other, itself included.
  bool isOpaque() const { return protocol.empty() || host.empty(); }
  // True when both are the same non-opaque origin: scheme and host compared
  // without regard to case, a default port written out equal to 0.
  bool isSameOrigin(const WKSecurityOrigin& other) const;

  bool operator==(const WKSecurityOrigin&) const = default;
};

struct WKFrameInfo {
  // False for a frame inside the page (an iframe).
  bool isMainFrame = true;
  WKSecurityOrigin securityOrigin;

  bool operator==(const WKFrameInfo&) const = default;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_WK_FRAME_INFO_H_
