// Where the reader's secrets go during a whole purchase against the sandbox:
// log in on the login page, come back with an expired token that is
// refreshed, pay, open the wallet, log out. The publisher's logo is served from
// another origin. The access tokens may only travel as the bearer of the four
// calls that carry it, the refresh token only in the refresh body, the device
// and login keys only in the bodies that name them; nothing reaches the other
// origin or the login page address; and a host that drops credential lines
// from the log gets none of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "entry/obolo.h"
#include "login/web_login_vc.h"
#include "network/api.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "toolkit/url_request.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::PaywallLook;
using reliability::StoredSession;
using testing::PaywallHost;
namespace seed = sandbox::seed;

bool Contains(std::string_view text, std::string_view secret) {
  return !secret.empty() && text.find(secret) != std::string_view::npos;
}

// A JSON Web Token's header, base64url of `{"`: no token-like text may show
// where no token belongs.
constexpr char kTokenStart[] = "eyJ";

class SecurityTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override { ASSERT_TRUE(logoOrigin_.start()) << logoOrigin_.error(); }
  void TearDown() override { logoOrigin_.stop(); }

  // The host app opens the article on `host`, with the logo on the other origin.
  std::shared_ptr<PaywallVC> Open(PaywallHost& host) {
    Obolo obolo(seed::kPublisherAccessKey, seed::kCategory, logoOrigin_.logoUrl(), seed::kNormalArticleUrl,
                seed::kPublisherCustomerId, seed::kPublisherDomain);
    obolo.loadPaywall(host.host, host.content, Position::bottom);
    auto paywall = std::dynamic_pointer_cast<PaywallVC>(host.host->children().back());
    Settle();
    EXPECT_TRUE(PaywallLook::Of(*paywall, host).offersCard());
    return paywall;
  }

  // Each secret with its name; a token also by its payload and signature, so
  // that part of a token counts as the token (its header is in every token).
  void AddSecret(const std::string& name, const std::string& value) {
    secrets_.emplace_back(name, value);
    for (std::size_t dot = value.find('.'); dot != std::string::npos;) {
      const std::size_t next = value.find('.', dot + 1);
      const std::string segment = value.substr(dot + 1, next == std::string::npos ? next : next - dot - 1);
      if (segment.size() >= 16) secrets_.emplace_back(name, segment);
      dot = next;
    }
  }

  // The whole purchase, as a reader goes through it.
  void RunWholePurchase() {
    // The login hands out an access token that lives 30 seconds: too short
    // for the kit, which refreshes it when the article is opened again.
    sandbox_.setTokenLifetimes(30s, 24h * 30);
    PaywallHost first(seed::kNormalArticleUrl);
    auto paywall = Open(first);
    ASSERT_TRUE(paywall->btnUnlock->tap());
    auto login = std::dynamic_pointer_cast<WebLoginVC>(paywall->presentedViewController());
    ASSERT_NE(login, nullptr);
    ASSERT_TRUE(login->webview->lastRequest().has_value());
    loginPage_ = login->webview->lastRequest();
    const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
    ASSERT_TRUE(login->webview->postMessageFromPage(kLoginScriptHandlerName,
                                                    {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
    Settle();
    const StoredSession loggedIn = loggedIn_ = StoredSession::Read();
    ASSERT_EQ(loggedIn.deviceKey, keys.deviceKey);
    ASSERT_FALSE(GlobalVariable::shared().isOBTokenValid());
    AddSecret("device key", keys.deviceKey);
    AddSecret("login key", keys.loginKey);
    AddSecret("refresh token", loggedIn.refreshToken);
    AddSecret("access token", loggedIn.accessToken);

    // The reader opens the article again: refresh, logged-in bid, pay.
    sandbox_.setTokenLifetimes(1h, 24h * 30);
    PaywallHost second(seed::kNormalArticleUrl);
    paywall = Open(second);
    const StoredSession refreshed = StoredSession::Read();
    ASSERT_NE(refreshed.accessToken, loggedIn.accessToken);
    AddSecret("access token", lastAccessToken_ = refreshed.accessToken);
    ASSERT_TRUE(paywall->btnUnlock->tap());
    Settle();
    second.advance(5100ms);
    ASSERT_TRUE(second.hasFloatingButtonOnScreen());
    ASSERT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));

    // The wallet: balance, then logout.
    ASSERT_TRUE(floatingButton(*second.host)->tap());
    auto wallet = std::dynamic_pointer_cast<LogoutController>(second.host->presentedViewController());
    ASSERT_NE(wallet, nullptr);
    Settle();
    ASSERT_EQ(wallet->lblBalance->text(), "EUR 9.5");
    ASSERT_TRUE(wallet->btnLogout->tap());
    Settle();
    ASSERT_TRUE(StoredSession::Read().empty());
    ASSERT_EQ(sandbox_.isDeviceLoggedOut(keys.deviceKey), true);
    // Both paywalls heard of the logout and asked for a logged-out bid.
    ASSERT_TRUE(PaywallLook::Of(*paywall, second).offersCard());
    ASSERT_EQ(sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath).size(), 3u);
  }

  sandbox::Sandbox logoOrigin_{sandbox::SandboxOptions{.https = false}};
  std::vector<std::pair<std::string, std::string>> secrets_;
  StoredSession loggedIn_;
  std::string lastAccessToken_;
  std::optional<URLRequest> loginPage_;
};

TEST_F(SecurityTest, SecretsTravelOnlyInTheHeadersAndBodiesThatCarryThem) {
  RunWholePurchase();
  if (HasFatalFailure()) return;
  // The calls that carry the bearer token, and the bodies each secret belongs in.
  const std::set<std::string> bearerCalls = {sandbox::kCreateLoggedInBidPath, sandbox::kAcceptBidPath,
                                             sandbox::kBalanceAndArticlePath, sandbox::kLogoutDevicePath};
  const std::map<std::string, std::set<std::string>> bodies = {
      {"access token", {}},
      {"refresh token", {sandbox::kNextAccessTokenPath}},
      {"device key", {sandbox::kCustomerBidPath, sandbox::kNextAccessTokenPath, sandbox::kLogoutDevicePath}},
      {"login key", {sandbox::kCustomerBidPath}}};
  int bearers = 0;
  for (const auto& request : sandbox_.requests()) {
    SCOPED_TRACE(request.method + " " + request.path);
    // The bearer: on the four calls, with the token stored when it was sent.
    const auto authorization = request.header("Authorization");
    if (bearerCalls.contains(request.path)) {
      EXPECT_EQ(authorization, "Bearer " + lastAccessToken_);
      ++bearers;
    } else {
      EXPECT_FALSE(authorization.has_value()) << *authorization;
    }
    for (const auto& [name, secret] : secrets_) {
      SCOPED_TRACE(name);
      EXPECT_FALSE(Contains(request.path, secret));
      EXPECT_FALSE(Contains(request.query, secret));
      EXPECT_EQ(Contains(request.body, secret), bodies.at(name).contains(request.path));
      for (const auto& [field, value] : request.headers) {
        if (field != "Authorization" || name != "access token") {
          EXPECT_FALSE(Contains(value, secret)) << "in header " << field;
        }
      }
    }
  }
  // Each call of the purchase was seen: a logged-in bid, the accept, the
  // balance and the logout carried the bearer; the refresh carried its token.
  EXPECT_EQ(bearers, 4);
  ASSERT_EQ(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).size(), 1u);
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCustomerBidPath).size(), 1u);
  const auto refresh = nlohmann::json::parse(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).at(0).body);
  EXPECT_EQ(refresh.value("refreshToken", ""), loggedIn_.refreshToken);

  // Whatever the kit sent off the service's origin was the two logos, and the
  // logo's origin got nothing of the reader's.
  int elsewhere = 0;
  for (const HttpRequest& request : transfers_.requests()) {
    elsewhere += !request.url.starts_with(API::BASE_URL() + "/");
  }
  EXPECT_EQ(elsewhere, 2);
  EXPECT_TRUE(sandbox_.requestsTo(sandbox::kPublisherLogoPath).empty());
  const auto logo = logoOrigin_.requests();
  ASSERT_EQ(logo.size(), 2u) << "one logo per paywall";
  for (const auto& request : logo) {
    EXPECT_EQ(request.path, sandbox::kPublisherLogoPath);
    EXPECT_FALSE(request.header("Authorization").has_value());
    EXPECT_FALSE(request.header("Cookie").has_value());
    EXPECT_TRUE(request.query.empty() && request.body.empty()) << request.query;
    for (const auto& [field, value] : request.headers) {
      EXPECT_FALSE(Contains(value, kTokenStart)) << field << ": " << value;
      for (const auto& [name, secret] : secrets_) EXPECT_FALSE(Contains(value, secret)) << name;
    }
  }

  // The login page: a plain GET of an address without anything token-like.
  const std::string address = loginPage_->url().absoluteString();
  EXPECT_EQ(loginPage_->httpMethod(), "GET");
  EXPECT_TRUE(loginPage_->allHTTPHeaderFields().empty());
  EXPECT_TRUE(loginPage_->httpBody().empty());
  EXPECT_FALSE(Contains(address, kTokenStart)) << address;
  for (const auto& [name, secret] : secrets_) EXPECT_FALSE(Contains(address, secret)) << name;
}

TEST_F(SecurityTest, ALogWithoutCredentialsCarriesNoSecretOfAWholePurchase) {
  // Lines arrive from any thread.
  struct Lines {
    std::mutex mutex;
    std::vector<std::string> all, kept;
  };
  auto lines = std::make_shared<Lines>();
  LogSink filtered = WithoutCredentials([lines](std::string_view line, LogContent) {
    std::lock_guard<std::mutex> lock(lines->mutex);
    lines->kept.emplace_back(line);
  });
  SetLogSink([lines, filtered](std::string_view line, LogContent content) {
    {
      std::lock_guard<std::mutex> lock(lines->mutex);
      lines->all.emplace_back(line);
    }
    filtered(line, content);
  });
  RunWholePurchase();
  SetLogSink({});
  if (HasFatalFailure()) return;

  std::lock_guard<std::mutex> lock(lines->mutex);
  for (const auto& [name, secret] : secrets_) {
    SCOPED_TRACE(name);
    // The kit did write the secret: only the filter kept it out.
    EXPECT_TRUE(std::any_of(lines->all.begin(), lines->all.end(), [&](auto& l) { return Contains(l, secret); }));
    for (const auto& line : lines->kept) EXPECT_FALSE(Contains(line, secret)) << line;
  }
  // The diagnostics still come through, from every part of the purchase.
  EXPECT_LT(lines->kept.size(), lines->all.size());
  for (const char* expected : {"createLoggedOutBid started", "customerBid started", "getNextAccessToken started",
                               "createLoggedInBid started", "acceptBid started", "tapped",
                               "getBalanceAndArticles started", "logout started"}) {
    EXPECT_NE(std::find(lines->kept.begin(), lines->kept.end(), expected), lines->kept.end()) << expected;
  }
}

}  // namespace
}  // namespace obolo
