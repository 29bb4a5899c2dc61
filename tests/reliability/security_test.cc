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
#include <memory>
#include <mutex>
#include <optional>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "entry/obolo.h"
#include "login/web_login_vc.h"
#include "network/api.h"
#include "platform/log.h"
#include "reliability/screen_fault_test.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "toolkit/url_request.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using reliability::PaywallLook;
using reliability::StoredSession;
using testing::PaywallHost;
namespace seed = sandbox::seed;

// What the reader's secrets were during the purchase.
struct Secrets {
  std::vector<std::string> accessTokens;  // from the login, then from the refresh
  std::string refreshToken;
  std::string deviceKey;
  std::string loginKey;

  // Each secret with its name; a token also by its payload and its
  // signature, so that part of a token counts as the token. (Its header
  // segment is the same in every token and no secret.)
  std::vector<std::pair<std::string, std::string>> all() const {
    std::vector<std::pair<std::string, std::string>> named;
    auto add = [&](const std::string& name, const std::string& value) {
      named.emplace_back(name, value);
      std::size_t dot = value.find('.');
      while (dot != std::string::npos) {
        const std::size_t next = value.find('.', dot + 1);
        const std::string segment = value.substr(dot + 1, next == std::string::npos ? next : next - dot - 1);
        if (segment.size() >= 16) named.emplace_back(name + " (a segment)", segment);
        dot = next;
      }
    };
    for (const auto& token : accessTokens) add("access token", token);
    add("refresh token", refreshToken);
    add("device key", deviceKey);
    add("login key", loginKey);
    return named;
  }
};

// The calls that carry the bearer token.
const std::set<std::string> kBearerCalls = {sandbox::kCreateLoggedInBidPath, sandbox::kAcceptBidPath,
                                            sandbox::kBalanceAndArticlePath, sandbox::kLogoutDevicePath};

bool Contains(std::string_view text, std::string_view secret) {
  return !secret.empty() && text.find(secret) != std::string_view::npos;
}

// A JSON Web Token's header, base64url of `{"`: no token-like text may show
// where no token belongs.
constexpr char kTokenStart[] = "eyJ";

class SecurityTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(logoOrigin_.start()) << logoOrigin_.error();
    ASSERT_NE(logoOrigin_.baseUrl(), sandbox_.baseUrl());
  }
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
    const StoredSession loggedIn = StoredSession::Read();
    ASSERT_EQ(loggedIn.deviceKey, keys.deviceKey);
    ASSERT_FALSE(GlobalVariable::shared().isOBTokenValid());
    secrets_.deviceKey = keys.deviceKey;
    secrets_.loginKey = keys.loginKey;
    secrets_.refreshToken = loggedIn.refreshToken;
    secrets_.accessTokens.push_back(loggedIn.accessToken);

    // The reader opens the article again: refresh, logged-in bid, pay.
    sandbox_.setTokenLifetimes(1h, 24h * 30);
    PaywallHost second(seed::kNormalArticleUrl);
    paywall = Open(second);
    const StoredSession refreshed = StoredSession::Read();
    ASSERT_NE(refreshed.accessToken, loggedIn.accessToken);
    secrets_.accessTokens.push_back(refreshed.accessToken);
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
  Secrets secrets_;
  std::optional<URLRequest> loginPage_;
};

TEST_F(SecurityTest, SecretsTravelOnlyInTheHeadersAndBodiesThatCarryThem) {
  RunWholePurchase();
  if (HasFatalFailure()) return;
  const std::string bearerPrefix = "Bearer ";
  const auto received = sandbox_.requests();
  int bearers = 0;
  for (const auto& request : received) {
    SCOPED_TRACE(request.method + " " + request.path);
    // The bearer: on the four calls, with the token stored when it was sent.
    const auto authorization = request.header("Authorization");
    if (kBearerCalls.contains(request.path)) {
      ASSERT_TRUE(authorization.has_value());
      EXPECT_EQ(*authorization, bearerPrefix + secrets_.accessTokens.back());
      ++bearers;
    } else {
      EXPECT_FALSE(authorization.has_value()) << *authorization;
    }

    for (const auto& [name, secret] : secrets_.all()) {
      SCOPED_TRACE(name);
      const bool inBody = Contains(request.body, secret);
      EXPECT_FALSE(Contains(request.path, secret));
      EXPECT_FALSE(Contains(request.query, secret));
      for (const auto& [field, value] : request.headers) {
        const bool bearerHere = field == "Authorization" && name.starts_with("access token");
        if (!bearerHere) {
          EXPECT_FALSE(Contains(value, secret)) << "in header " << field;
        }
      }
      if (name.starts_with("access token")) {
        EXPECT_FALSE(inBody) << "an access token goes in no body";
      } else if (name.starts_with("refresh token")) {
        EXPECT_EQ(inBody, request.path == sandbox::kNextAccessTokenPath);
      } else if (name == "device key") {
        EXPECT_EQ(inBody, request.path == sandbox::kCustomerBidPath || request.path == sandbox::kNextAccessTokenPath ||
                              request.path == sandbox::kLogoutDevicePath);
      } else if (name == "login key") {
        EXPECT_EQ(inBody, request.path == sandbox::kCustomerBidPath);
      }
    }
  }
  // Each call of the purchase was seen: a logged-in bid, the accept, the
  // balance and the logout carried the bearer; the refresh carried its token.
  EXPECT_EQ(bearers, 4);
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).size(), 1u);
  EXPECT_EQ(sandbox_.requestsTo(sandbox::kCustomerBidPath).size(), 1u);
  const json refresh = json::parse(sandbox_.requestsTo(sandbox::kNextAccessTokenPath).at(0).body);
  EXPECT_EQ(refresh.value("refreshToken", ""), secrets_.refreshToken);

  // The logo's origin got the logo requests, and nothing of the reader's.
  EXPECT_TRUE(sandbox_.requestsTo(sandbox::kPublisherLogoPath).empty());
  const auto logo = logoOrigin_.requests();
  ASSERT_EQ(logo.size(), 2u) << "one logo per paywall";
  for (const auto& request : logo) {
    EXPECT_EQ(request.path, sandbox::kPublisherLogoPath);
    EXPECT_FALSE(request.header("Authorization").has_value());
    EXPECT_FALSE(request.header("Cookie").has_value());
    EXPECT_TRUE(request.query.empty()) << request.query;
    EXPECT_TRUE(request.body.empty());
    for (const auto& [field, value] : request.headers) {
      EXPECT_FALSE(Contains(value, kTokenStart)) << field << ": " << value;
      for (const auto& [name, secret] : secrets_.all()) EXPECT_FALSE(Contains(value, secret)) << name;
    }
  }

  // The kit's side: whatever it sent anywhere but the service's origin carries
  // no Authorization and no secret.
  const std::string service = API::BASE_URL() + "/";
  int elsewhere = 0;
  for (const HttpRequest& request : transfers_.requests()) {
    if (request.url.starts_with(service)) continue;
    ++elsewhere;
    SCOPED_TRACE(request.url);
    EXPECT_FALSE(request.value("Authorization").has_value());
    EXPECT_FALSE(Contains(request.url, kTokenStart));
    for (const auto& [name, secret] : secrets_.all()) {
      EXPECT_FALSE(Contains(request.url, secret)) << name;
      EXPECT_FALSE(Contains(request.body, secret)) << name;
      for (const auto& [field, value] : request.headers) EXPECT_FALSE(Contains(value, secret)) << name;
    }
  }
  EXPECT_EQ(elsewhere, 2);

  // The login page: a plain GET of an address without anything token-like.
  const std::string address = loginPage_->url().absoluteString();
  EXPECT_EQ(loginPage_->httpMethod(), "GET");
  EXPECT_TRUE(loginPage_->allHTTPHeaderFields().empty());
  EXPECT_TRUE(loginPage_->httpBody().empty());
  EXPECT_FALSE(Contains(address, kTokenStart)) << address;
  for (const auto& [name, secret] : secrets_.all()) EXPECT_FALSE(Contains(address, secret)) << name;
}

// Collects the lines a sink lets through; lines arrive from any thread.
class Lines {
 public:
  void add(std::string_view line) {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.emplace_back(line);
  }
  std::vector<std::string> get() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

TEST_F(SecurityTest, ALogWithoutCredentialsCarriesNoSecretOfAWholePurchase) {
  auto everything = std::make_shared<Lines>();
  auto kept = std::make_shared<Lines>();
  LogSink filtered = WithoutCredentials([kept](std::string_view line, LogContent) { kept->add(line); });
  SetLogSink([everything, filtered](std::string_view line, LogContent content) {
    everything->add(line);
    filtered(line, content);
  });
  RunWholePurchase();
  SetLogSink({});
  if (HasFatalFailure()) return;

  const auto lines = kept->get();
  const auto all = everything->get();
  for (const auto& [name, secret] : secrets_.all()) {
    SCOPED_TRACE(name);
    // The kit did write the secret: only the filter kept it out.
    bool written = false;
    for (const auto& line : all) written = written || Contains(line, secret);
    EXPECT_TRUE(written);
    for (const auto& line : lines) EXPECT_FALSE(Contains(line, secret)) << line;
  }
  // The diagnostics still come through, from every part of the purchase.
  EXPECT_LT(lines.size(), all.size());
  for (const char* expected : {"createLoggedOutBid started", "customerBid started", "getNextAccessToken started",
                               "createLoggedInBid started", "acceptBid started", "tapped",
                               "getBalanceAndArticles started", "logout started"}) {
    EXPECT_NE(std::find(lines.begin(), lines.end(), expected), lines.end()) << expected;
  }
}

}  // namespace
}  // namespace obolo
