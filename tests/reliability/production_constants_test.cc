// The addresses a shipped app reaches, read in a process where none of the
// developer overrides is set: every one is HTTPS, so no token, key or page
// travels in the clear. This program runs without the sandbox on purpose.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <string_view>

#include "login/web_login_vc.h"
#include "network/api.h"
#include "ui/consents.h"

namespace obolo {
namespace {

// One DNS label: letters, digits and inner hyphens.
bool IsLabel(std::string_view label) {
  return !label.empty() && label.front() != '-' && label.back() != '-' &&
         label.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string_view::npos;
}

// "https://host" or "https://host:port": an origin on a dotted host name, no
// path, no trailing slash.
bool IsHttpsOrigin(std::string_view text) {
  if (!text.starts_with("https://")) return false;
  text.remove_prefix(8);
  if (const auto colon = text.find(':'); colon != std::string_view::npos) {
    const std::string_view port = text.substr(colon + 1);
    if (port.empty() || port.find_first_not_of("0123456789") != std::string_view::npos) return false;
    text = text.substr(0, colon);
  }
  int dots = 0;
  for (std::string_view rest = text;; ++dots) {
    const auto dot = rest.find('.');
    if (!IsLabel(rest.substr(0, dot))) return false;
    if (dot == std::string_view::npos) break;
    rest.remove_prefix(dot + 1);
  }
  return dots >= 1;
}

// An HTTPS address with a path, on a named host (not a loopback address).
bool IsHttpsAddress(std::string_view text) {
  const auto path = text.find('/', 8);
  return path != std::string_view::npos && text.find_first_of(" \t\r\n", path) == std::string_view::npos &&
         IsHttpsOrigin(text.substr(0, path));
}

bool IsLoopback(const std::string& text) {
  return text.find("127.0.0.1") != std::string::npos || text.find("localhost") != std::string::npos ||
         text.find("[::1]") != std::string::npos;
}

// A parameter of the login address's query (it is not encoded).
std::string QueryParameter(const std::string& address, const std::string& name) {
  for (const char* separator : {"?", "&"}) {
    if (const auto at = address.find(separator + name + "="); at != std::string::npos) {
      const auto value = at + name.size() + 2;
      return address.substr(value, address.find('&', value) - value);
    }
  }
  return "";
}

TEST(ProductionConstantsTest, EveryAddressAShippedAppReachesIsHttps) {
  // The kit reads each override once, at first use, so clearing them before
  // anything of the kit runs gives its defaults.
  for (const char* name : {"OBOLO_API_BASE_URL", "OBOLO_WALLET_ORIGIN", "OBOLO_REDIRECT_ORIGIN",
                           "OBOLO_LOGIN_LOGO_URL", "OBOLO_CA_FILE"}) {
    unsetenv(name);
  }
  // The service.
  const std::string& base = API::BASE_URL();
  EXPECT_TRUE(IsHttpsOrigin(base) && !IsLoopback(base)) << base;
  for (std::string_view path : {API::V2::CREATE_LOGGED_OUT_BID, API::V2::CREATE_LOGGED_IN_BID, API::V2::CUSTOMER_BID,
                                API::V2::ACCEPT_BID, API::V2::BALANCE_ARTICLE, API::V1::NEXT_ACCESS_TOKEN,
                                API::V1::LOGOUT}) {
    const std::string address = base + std::string(path);
    EXPECT_TRUE(IsHttpsAddress(address)) << address;
    EXPECT_EQ(address.find("//", 8), std::string::npos) << "the base and the path join with one slash: " << address;
  }

  // The login page and everything it names.
  EXPECT_TRUE(IsHttpsOrigin(LOGIN_WALLET_ORIGIN())) << LOGIN_WALLET_ORIGIN();
  EXPECT_TRUE(IsHttpsOrigin(LOGIN_REDIRECT_ORIGIN())) << LOGIN_REDIRECT_ORIGIN();
  EXPECT_TRUE(IsHttpsAddress(LOGIN_LOGO_URL())) << LOGIN_LOGO_URL();
  WebLoginVC login;
  login.publisherId = 7;
  login.obBidId = 345;
  const std::string address = login.loginAddress();
  EXPECT_TRUE(address.starts_with(LOGIN_WALLET_ORIGIN() + "/?") && !IsLoopback(address)) << address;
  EXPECT_TRUE(IsHttpsAddress(QueryParameter(address, "login_publisher_logo_url"))) << address;
  EXPECT_TRUE(IsHttpsAddress(QueryParameter(address, "login_redirect_url"))) << address;

  // The consent pages; the contact is a mail address.
  EXPECT_TRUE(IsHttpsAddress(Consents::TERMS_URL)) << Consents::TERMS_URL;
  EXPECT_TRUE(IsHttpsAddress(Consents::PRIVACY_URL)) << Consents::PRIVACY_URL;
  EXPECT_TRUE(std::string_view(Consents::CONTACT_URL).starts_with("mailto:")) << Consents::CONTACT_URL;
}

}  // namespace
}  // namespace obolo
