// The login screen's input is the page's script message. Opened from a
// paywall against the sandbox, every malformed message leaves the login open,
// the paywall as it was and no session stored; a message with both keys as
// texts closes it whatever the texts are, and a customer bid the service
// refuses leaves the card and no session. The screen keeps working after each.

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "login/web_login_vc.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using nlohmann::json;
using reliability::PaywallLook;
using reliability::StoredSession;
namespace seed = sandbox::seed;

// Nesting a recursive reader or writer would not survive, built by moves only.
json DeepBody() {
  json deep = {{"device_key", "dk"}};
  for (int i = 0; i < 100000; ++i) deep = i % 2 ? json::array({std::move(deep)}) : json{{"k", std::move(deep)}};
  return deep;
}

class LoginFaultMatrixTest : public reliability::ScreenFaultTest {
 protected:
  std::shared_ptr<WebLoginVC> OpenLogin() {
    EXPECT_TRUE(paywall_->btnUnlock->tap());
    return std::dynamic_pointer_cast<WebLoginVC>(paywall_->presentedViewController());
  }
  bool Post(WebLoginVC& login, const std::string& deviceKey, const std::string& loginKey) {
    return login.webview->postMessageFromPage(kLoginScriptHandlerName,
                                              {{"device_key", deviceKey}, {"login_key", loginKey}});
  }

  testing::PaywallHost host_{seed::kNormalArticleUrl};
  std::shared_ptr<PaywallVC> paywall_ = host_.load();
};

TEST_F(LoginFaultMatrixTest, MalformedPageMessagesNeitherCloseTheLoginNorTouchThePaywall) {
  reliability::CaseCount cases("login screen, page messages");
  Settle();
  const PaywallLook card = PaywallLook::Of(*paywall_, host_);
  ASSERT_TRUE(card.offersCard());
  auto login = OpenLogin();
  ASSERT_NE(login, nullptr);

  std::vector<std::pair<const char*, json>> messages;
  messages.emplace_back("device key only", json{{"device_key", "dk"}});
  messages.emplace_back("login key only", json{{"login_key", "lk"}});
  messages.emplace_back("login key a number", json{{"device_key", "dk"}, {"login_key", 42}});
  messages.emplace_back("device key null", json{{"device_key", nullptr}, {"login_key", "lk"}});
  messages.emplace_back("device key a list of texts", json{{"device_key", json::array({"dk"})}, {"login_key", "lk"}});
  messages.emplace_back("login key an object", json{{"device_key", "dk"}, {"login_key", {{"value", "lk"}}}});
  messages.emplace_back("both keys booleans", json{{"device_key", true}, {"login_key", false}});
  messages.emplace_back("keys in another case", json{{"Device_Key", "dk"}, {"LOGIN_KEY", "lk"}});
  messages.emplace_back("keys one level down", json{{"data", {{"device_key", "dk"}, {"login_key", "lk"}}}});
  messages.emplace_back("empty object", json::object());
  messages.emplace_back("null", json(nullptr));
  messages.emplace_back("a bare text", json("device_key=dk&login_key=lk"));
  messages.emplace_back("a list", json::array({"dk", "lk"}));
  messages.emplace_back("deep nesting", DeepBody());
  messages.emplace_back("a huge unrelated member", json{{"padding", std::string(2 * 1024 * 1024, 'p')}});
  for (auto& [name, body] : messages) {
    SCOPED_TRACE(name);
    ++cases;
    const std::size_t from = TransfersSoFar();
    ASSERT_TRUE(login->webview->postMessageFromPage(kLoginScriptHandlerName, std::move(body)));
    Settle();
    EXPECT_EQ(paywall_->presentedViewController(), login) << "the login stays open";
    EXPECT_FALSE(login->isBeingDismissed());
    EXPECT_TRUE(CallsSince(from).empty()) << "no customer bid";
    EXPECT_FALSE(paywall_->isRedirectToPaywall);
    PaywallLook look = PaywallLook::Of(*paywall_, host_);
    EXPECT_TRUE(look.presenting);
    look.presenting = false;
    EXPECT_EQ(look, card);
    EXPECT_TRUE(StoredSession::Read().empty());
  }

  // Both keys as texts close the login whatever the texts are; the service
  // refuses keys it did not issue and the card stays, with no session.
  const auto issued = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
  const auto other = sandbox_.issueLoginKeys(seed::kCreditReaderEmail).value();
  const std::vector<std::array<std::string, 3>> closing = {
      {"empty keys", "", ""},
      {"keys the service never issued", "dk-unknown", "lk-unknown"},
      {"one reader's device with another's login key", issued.deviceKey, other.loginKey},
      {"a device key that is not UTF-8", "\xed\xa0\x80\xff", issued.loginKey + "-not"},
  };
  for (const auto& [name, deviceKey, loginKey] : closing) {
    SCOPED_TRACE(name);
    ++cases;
    if (!paywall_->presentedViewController()) login = OpenLogin();
    ASSERT_NE(login, nullptr);
    const std::size_t from = TransfersSoFar();
    sandbox_.clearRequests();
    ASSERT_TRUE(Post(*login, deviceKey, loginKey));
    Settle();
    EXPECT_EQ(paywall_->presentedViewController(), nullptr) << "the login closed";
    EXPECT_TRUE(paywall_->isRedirectToPaywall);
    EXPECT_EQ(CallsSince(from), std::vector<std::string>{sandbox::kCustomerBidPath});
    const auto sent = sandbox_.requestsTo(sandbox::kCustomerBidPath);
    ASSERT_EQ(sent.size(), 1u);
    const json body = json::parse(sent[0].body);
    if (deviceKey.empty()) {
      EXPECT_EQ(body, (json{{"oboloBidId", card.bidId}})) << "empty texts are left out, not refused";
    } else {
      EXPECT_EQ(body.value("oboloBidId", 0), card.bidId);
      EXPECT_EQ(body.value("loginToken", ""), loginKey);
    }
    EXPECT_EQ(PaywallLook::Of(*paywall_, host_), card);
    EXPECT_TRUE(StoredSession::Read().empty());
  }

  // The screen still logs a reader in.
  login = OpenLogin();
  ASSERT_NE(login, nullptr);
  const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
  ASSERT_TRUE(Post(*login, keys.deviceKey, keys.loginKey));
  Settle();
  EXPECT_EQ(StoredSession::Read().email, seed::kReaderEmail);
  EXPECT_EQ(StoredSession::Read().deviceKey, keys.deviceKey);
  EXPECT_TRUE(PaywallLook::Of(*paywall_, host_).offersCard());
}

}  // namespace
}  // namespace obolo
