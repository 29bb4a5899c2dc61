// The addresses a shipped app reaches, read in a process where none of the
// developer overrides is set: every one is HTTPS, so no token, key or page
// travels in the clear. This program runs without the sandbox on purpose.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <map>
#include <string>
#include <string_view>

#include "login/web_login_vc.h"
#include "network/api.h"
#include "ui/consents.h"

namespace obolo {
namespace {

// The variables that point the kit elsewhere. The kit reads each once, at first
// use, so clearing them before anything of the kit runs gives its defaults.
void ClearOverrides() {
  for (const char* name : {"OBOLO_API_BASE_URL", "OBOLO_WALLET_ORIGIN", "OBOLO_REDIRECT_ORIGIN",
                           "OBOLO_LOGIN_LOGO_URL", "OBOLO_CA_FILE"}) {
    unsetenv(name);
  }
}

// One DNS label: letters, digits and inner hyphens.
bool IsLabel(std::string_view label) {
  if (label.empty() || label.front() == '-' || label.back() == '-') return false;
  for (char c : label) {
    if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-')) return false;
  }
  return true;
}

// "https://host" or "https://host:port": an origin on a dotted host name, no
// path, no trailing slash.
bool IsHttpsOrigin(std::string_view text) {
  constexpr std::string_view kScheme = "https://";
  if (!text.starts_with(kScheme)) return false;
  text.remove_prefix(kScheme.size());
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
  const auto path = text.find('/', std::string_view("https://").size());
  if (path == std::string_view::npos) return false;
  if (text.find_first_of(" \t\r\n", path) != std::string_view::npos) return false;
  return IsHttpsOrigin(text.substr(0, path));
}

bool IsLoopback(const std::string& text) {
  return text.find("127.0.0.1") != std::string::npos || text.find("localhost") != std::string::npos ||
         text.find("[::1]") != std::string::npos;
}

// The query of the login address, split at '&' and '=' (it is not encoded).
std::map<std::string, std::string> QueryOf(const std::string& address) {
  std::map<std::string, std::string> parameters;
  std::string_view query(address);
  query.remove_prefix(address.find('?') + 1);
  while (!query.empty()) {
    const auto end = query.find('&');
    const std::string_view pair = query.substr(0, end);
    const auto equals = pair.find('=');
    parameters[std::string(pair.substr(0, equals))] = std::string(pair.substr(equals + 1));
    if (end == std::string_view::npos) break;
    query.remove_prefix(end + 1);
  }
  return parameters;
}

TEST(ProductionConstantsTest, TheServiceIsReachedOverHttpsOnly) {
  ClearOverrides();
  const std::string& base = API::BASE_URL();
  EXPECT_TRUE(IsHttpsOrigin(base)) << base;
  EXPECT_FALSE(IsLoopback(base)) << base;
  for (std::string_view path : {API::V2::CREATE_LOGGED_OUT_BID, API::V2::CREATE_LOGGED_IN_BID, API::V2::CUSTOMER_BID,
                                API::V2::ACCEPT_BID, API::V2::BALANCE_ARTICLE, API::V1::NEXT_ACCESS_TOKEN,
                                API::V1::LOGOUT}) {
    const std::string address = base + std::string(path);
    EXPECT_TRUE(IsHttpsAddress(address)) << address;
    EXPECT_EQ(address.find("//", 8), std::string::npos) << "the base and the path join with one slash: " << address;
  }
}

TEST(ProductionConstantsTest, TheLoginPageAndEverythingItNamesAreHttps) {
  ClearOverrides();
  EXPECT_TRUE(IsHttpsOrigin(LOGIN_WALLET_ORIGIN())) << LOGIN_WALLET_ORIGIN();
  EXPECT_TRUE(IsHttpsOrigin(LOGIN_REDIRECT_ORIGIN())) << LOGIN_REDIRECT_ORIGIN();
  EXPECT_TRUE(IsHttpsAddress(LOGIN_LOGO_URL())) << LOGIN_LOGO_URL();

  WebLoginVC login;
  login.publisherId = 7;
  login.obBidId = 345;
  const std::string address = login.loginAddress();
  EXPECT_TRUE(address.starts_with(LOGIN_WALLET_ORIGIN() + "/?")) << address;
  EXPECT_FALSE(IsLoopback(address)) << address;
  const auto query = QueryOf(address);
  ASSERT_TRUE(query.contains("login_publisher_logo_url")) << address;
  ASSERT_TRUE(query.contains("login_redirect_url")) << address;
  EXPECT_TRUE(IsHttpsAddress(query.at("login_publisher_logo_url"))) << address;
  EXPECT_TRUE(IsHttpsAddress(query.at("login_redirect_url"))) << address;
}

TEST(ProductionConstantsTest, TheConsentPagesAreHttpsAndTheContactIsMail) {
  ClearOverrides();
  EXPECT_TRUE(IsHttpsAddress(std::string(Consents::TERMS_URL))) << Consents::TERMS_URL;
  EXPECT_TRUE(IsHttpsAddress(std::string(Consents::PRIVACY_URL))) << Consents::PRIVACY_URL;
  EXPECT_TRUE(std::string_view(Consents::CONTACT_URL).starts_with("mailto:")) << Consents::CONTACT_URL;
}

}  // namespace
}  // namespace obolo
