// What the service's login page does for a reader, without a browser: asks the
// wallet site for a one-time code and trades it for the device key and login
// key the page would post to the kit. The sandbox's login page works this
// way; a production service's page needs a real browser.

#ifndef OBOLO_DEMO_LOGIN_PAGE_CLIENT_H_
#define OBOLO_DEMO_LOGIN_PAGE_CLIENT_H_

#include <optional>
#include <string>

namespace obolo::demo {

struct PageKeys {
  std::string deviceKey;
  std::string loginKey;
};

// `origin` is the wallet site's origin; `caFile` a certificate to trust (may be
// empty). Returns none, with `error` set, when the site does not hand out keys.
std::optional<PageKeys> LogInOnPage(const std::string& origin, const std::string& caFile, const std::string& email,
                                    std::string& error);

}  // namespace obolo::demo

#endif  // OBOLO_DEMO_LOGIN_PAGE_CLIENT_H_
