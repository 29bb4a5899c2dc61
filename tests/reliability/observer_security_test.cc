// No secret of the reader's session reaches a host's observer: not over a
// whole purchase against the sandbox (login, token refresh, payment, wallet,
// logout), and not when the service itself echoes the reader's tokens, keys
// or e-mail in a refusal or a price.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "entry/credential_mask.h"
#include "entry/obolo.h"
#include "login/web_login_vc.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/event_recorder.h"
#include "wallet/floating_button.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using reliability::PaywallLook;
using reliability::StoredSession;
using sandbox::Fault;
using testing::EventRecorder;
using testing::PaywallHost;
namespace seed = sandbox::seed;

class ObserverSecurityTest : public reliability::ScreenFaultTest {
 protected:
  ObserverSecurityTest() { PaywallObservers::global().add(recorder_); }
  ~ObserverSecurityTest() override { PaywallObservers::global().remove(recorder_); }

  std::shared_ptr<PaywallVC> Open(PaywallHost& host) {
    Obolo obolo(seed::kPublisherAccessKey, seed::kCategory, sandbox_.logoUrl(), host.articleUrl,
                seed::kPublisherCustomerId, seed::kPublisherDomain);
    obolo.loadPaywall(host.host, host.content, Position::center);
    auto paywall = std::dynamic_pointer_cast<PaywallVC>(host.host->children().back());
    Settle();
    return paywall;
  }

  // Taps unlock on a card without a session; the login screen it opens, and
  // the keys its page will hand over.
  std::pair<std::shared_ptr<WebLoginVC>, sandbox::LoginKeys> OpenLogin(PaywallVC& paywall) {
    EXPECT_TRUE(paywall.btnUnlock->tap());
    return {std::dynamic_pointer_cast<WebLoginVC>(paywall.presentedViewController()),
            sandbox_.issueLoginKeys(seed::kReaderEmail).value()};
  }

  // Each secret, and each long part of a token, which counts as the token.
  void AddSecret(const std::string& value) {
    secrets_.push_back(value);
    for (std::size_t from = 0;;) {
      const std::size_t dot = value.find('.', from);
      const std::string part = value.substr(from, dot == std::string::npos ? dot : dot - from);
      if (part.size() >= 16) secrets_.push_back(part);
      if (dot == std::string::npos) break;
      from = dot + 1;
    }
  }

  // Every text of every event heard, and its description.
  std::vector<std::string> HeardTexts() const {
    std::vector<std::string> texts;
    for (const PaywallEvent& event : recorder_->events()) {
      for (const std::string& text :
           {event.articleUrl, event.priceText, event.failureText, Describe(event)}) {
        texts.push_back(text);
      }
    }
    return texts;
  }

  void ExpectNoSecretHeard() const {
    ASSERT_FALSE(secrets_.empty());
    for (const std::string& text : HeardTexts()) {
      for (const std::string& secret : secrets_) {
        EXPECT_EQ(text.find(secret), std::string::npos) << "\"" << secret << "\" in \"" << text << "\"";
      }
    }
  }

  std::shared_ptr<EventRecorder> recorder_ = std::make_shared<EventRecorder>();
  std::vector<std::string> secrets_;
};

TEST_F(ObserverSecurityTest, AWholePurchaseHandsNoSecretToAnObserver) {
  // The login's access token lives 30 seconds, too short for the kit: the
  // second screen refreshes it before its bid.
  sandbox_.setTokenLifetimes(30s, 24h);
  PaywallHost first(seed::kNormalArticleUrl);
  auto paywall = Open(first);
  const auto [login, keys] = OpenLogin(*paywall);
  ASSERT_NE(login, nullptr);
  ASSERT_TRUE(login->webview->postMessageFromPage(
      kLoginScriptHandlerName, {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
  Settle();
  const StoredSession loggedIn = StoredSession::Read();
  ASSERT_EQ(loggedIn.deviceKey, keys.deviceKey);
  AddSecret(keys.deviceKey);
  AddSecret(keys.loginKey);
  AddSecret(loggedIn.accessToken);
  AddSecret(loggedIn.refreshToken);
  AddSecret(loggedIn.email);

  sandbox_.setTokenLifetimes(1h, 24h);
  PaywallHost second(seed::kNormalArticleUrl);
  paywall = Open(second);
  const StoredSession refreshed = StoredSession::Read();
  ASSERT_NE(refreshed.accessToken, loggedIn.accessToken);
  AddSecret(refreshed.accessToken);
  ASSERT_TRUE(paywall->btnUnlock->tap());
  Settle();
  second.advance(5100ms);
  ASSERT_TRUE(floatingButton(*second.host)->tap());
  auto wallet = std::dynamic_pointer_cast<LogoutController>(second.host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  Settle();
  ASSERT_TRUE(wallet->btnLogout->tap());
  Settle();
  ASSERT_TRUE(StoredSession::Read().empty());

  // Every step was heard, and none of it carried a secret.
  const std::vector<std::string> heard = recorder_->described();
  for (const char* step : {"login completed", "article revealed, paid now", "wallet opened", "logout"}) {
    EXPECT_NE(std::find(heard.begin(), heard.end(), step), heard.end()) << step;
  }
  ExpectNoSecretHeard();
}

TEST_F(ObserverSecurityTest, TheServiceEchoingTheSessionReachesObserversMasked) {
  const auto session = sandbox_.createSession(seed::kReaderEmail).value();
  const std::string all =
      session.accessToken + " " + session.refreshToken + " " + session.deviceKey + " " + session.email;
  const json settings = {{"obTitle", "Read on"}, {"obCustomerPrice", "€0.50 " + all}};
  const json bid = {{"success", true},
                    {"data",
                     {{"oboloBidId", 9},
                      {"publisherId", seed::kPublisherId},
                      {"articleActive", true},
                      {"isPaywallEnabledInCountry", true},
                      {"oboloTransactionMode", "normal"},
                      {"paywallSettings", settings}}}};
  Fault refusal = Fault::Once(sandbox::FaultKind::kFailureWithMessage);
  refusal.message = "Session " + all + " is not allowed here";
  struct Row {
    const char* name;
    Fault fault;
    std::string heard;  // Describe() of the one event
  };
  const std::vector<Row> rows = {
      {"a refusal of the logged-in bid", refusal,
       "createLoggedInBid failed: \"Session [hidden] [hidden] [hidden] [hidden] is not allowed here\""},
      {"a price on the card", Fault::Custom(200, bid.dump()),
       "card shown, price \"€0.50 [hidden] [hidden] [hidden] [hidden]\", at center"},
  };
  for (const std::string& secret :
       {session.accessToken, session.refreshToken, session.deviceKey, session.email}) {
    AddSecret(secret);
  }
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    recorder_->clear();
    reliability::StoreSession(session);
    sandbox_.setFault(sandbox::kCreateLoggedInBidPath, row.fault);
    PaywallHost host(seed::kNormalArticleUrl);
    Open(host);
    EXPECT_EQ(recorder_->described(), std::vector<std::string>{row.heard});
    ExpectNoSecretHeard();
  }
}

TEST_F(ObserverSecurityTest, AKeyTheKitNeverStoredIsMaskedByItsShape) {
  // The customer bid's answer echoes the login key, which the kit hands to
  // the service and never keeps, in the card's price.
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = Open(host);
  const auto [login, keys] = OpenLogin(*paywall);
  ASSERT_NE(login, nullptr);
  const json answer = {{"success", true},
                       {"data",
                        {{"oboloBidId", paywall->obBidId},
                         {"articleActive", true},
                         {"isPaywallEnabledInCountry", true},
                         {"oboloTransactionMode", "normal"},
                         {"paywallSettings", {{"obCustomerPrice", "€0.50 for " + keys.loginKey}}}}}};
  sandbox_.setFault(sandbox::kCustomerBidPath, Fault::Custom(200, answer.dump()));
  Settle();
  recorder_->clear();
  ASSERT_TRUE(login->webview->postMessageFromPage(
      kLoginScriptHandlerName, {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
  Settle();
  AddSecret(keys.loginKey);
  AddSecret(keys.deviceKey);
  EXPECT_EQ(
      recorder_->described(),
      (std::vector<std::string>{"login completed", "card shown, price \"€0.50 for [hidden]\", at center"}));
  ExpectNoSecretHeard();
}

}  // namespace
}  // namespace obolo
