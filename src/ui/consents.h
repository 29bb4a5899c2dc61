// The addresses the kit's link buttons open: the service's terms and privacy
// pages and its support mailbox.

#ifndef OBOLO_UI_CONSENTS_H_
#define OBOLO_UI_CONSENTS_H_

#include <string_view>

namespace obolo {

struct Consents {
  static constexpr std::string_view TERMS_URL = "https://obolo.io/terms";      // the terms of use
  static constexpr std::string_view PRIVACY_URL = "https://obolo.io/privacy";  // the privacy policy
  static constexpr std::string_view CONTACT_URL = "mailto:support@obolo.io";   // support by mail
};

}  // namespace obolo

#endif  // OBOLO_UI_CONSENTS_H_
