// A stored token that holds a line break would put header lines of its own on
// the wire. Whether the host wrote it or the service's answer brought it, a
// call whose header cannot be sent sends nothing, calls back nothing, and says
// so in one line that does not repeat the token.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "entry/user_default_key.h"
#include "login/web_login_vc.h"
#include "network/network_manager.h"
#include "platform/preference_store.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/log_capture.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using reliability::PaywallLook;
using testing::CallProbe;
using testing::PaywallHost;
namespace seed = sandbox::seed;

constexpr char kNotSent[] = "Not sent: the Authorization header holds a line break or NUL";

class HeaderInjectionTest : public reliability::ScreenFaultTest {
 protected:
  int LinesSaying(const std::string& text) const {
    const auto lines = log_.lines();
    return static_cast<int>(std::count(lines.begin(), lines.end(), text));
  }
  bool AnyLineHolds(const std::string& text) const {
    const auto lines = log_.lines();
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.find(text) != l.npos; });
  }

  template <class Envelope, class Param>
  static std::function<int()> Issue(void (NetworkManager::*method)(const Param&, Completion<Envelope>, OnFailure)
                                        const) {
    CallProbe<Envelope> probe;
    (NetworkManager::shared().*method)(Param{}, probe.completion(), probe.onFailure());
    return [probe] { return probe.calls(); };
  }

  testing::LogCapture log_;  // replaces the fixture's silent sink
};

TEST_F(HeaderInjectionTest, AHostWrittenTokenWithALineBreakSendsNoBearerCall) {
  reliability::CaseCount cases("NetworkManager, 4 unsendable tokens x 4 bearer calls");
  const auto session = sandbox_.createSession(seed::kReaderEmail).value();
  reliability::StoreSession(session);
  const std::string tokens[] = {
      session.accessToken + "\r\nX-Injected: yes",
      session.accessToken + "\nX-Injected: yes",
      session.accessToken + "\rX-Injected: yes",
      session.accessToken + std::string(1, '\0') + "X-Injected: yes",
  };
  // Each issues one bearer call and returns how many closures it has run.
  const std::function<std::function<int()>()> bearerCalls[] = {
      [] { return Issue(&NetworkManager::createLoggedInBid); },
      [] { return Issue(&NetworkManager::acceptBid); },
      [] { return Issue(&NetworkManager::getBalanceAndArticles); },
      [] { return Issue(&NetworkManager::logout); },
  };
  for (const std::string& token : tokens) {
    SCOPED_TRACE(::testing::PrintToString(token));
    // The host writes the key itself, as a host may.
    PreferenceStore::standard()->set(rawValue(UserDefaultKey::accessToken), token);
    for (const auto& issue : bearerCalls) {
      ++cases;
      log_.clear();
      sandbox_.clearRequests();
      const std::size_t before = TransfersSoFar();
      const auto closures = issue();
      // A call without a bearer still goes out; once its answer is in, a
      // closure of the refused call would have run too.
      const auto witness = Issue(&NetworkManager::createLoggedOutBid);
      Settle();
      ASSERT_EQ(witness(), 1);
      EXPECT_EQ(closures(), 0) << "no closure";
      EXPECT_EQ(TransfersSoFar(), before + 1) << "only the call without a bearer became a transfer";
      EXPECT_EQ(sandbox_.requests().size(), 1u);
      EXPECT_EQ(LinesSaying(kNotSent), 1);
      EXPECT_FALSE(AnyLineHolds("X-Injected")) << "the token is not written out either";
    }
  }
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session.deviceKey), false);
}

// The customer bid's answer brings a session whose access token holds a line
// break; the paywall stores it, and the payment it would carry never leaves.
TEST_F(HeaderInjectionTest, ATokenFromTheServicesAnswerWithALineBreakNeverCarriesAPayment) {
  NetworkManager& network = NetworkManager::shared();
  // The service's real customer-bid answer, with its token spoiled.
  CreateLoggedBidParam bidParam;
  bidParam.articleUrl = seed::kNormalArticleUrl;
  bidParam.category = seed::kCategory;
  bidParam.publisherCustomerId = seed::kPublisherCustomerId;
  bidParam.publisherDomain = seed::kPublisherDomain;
  CallProbe<OboloData> bid;
  network.createLoggedOutBid(bidParam, bid.completion(), bid.onFailure());
  ASSERT_TRUE(bid.wait() && bid.envelope() && bid.envelope()->data);
  const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
  CallProbe<OboloData> login;
  network.customerBid({keys.deviceKey, bid.envelope()->data->oboloBidId.value(), keys.loginKey},
                      login.completion(), login.onFailure());
  ASSERT_TRUE(login.wait() && login.envelope());
  OboloData answer = *login.envelope();
  ASSERT_TRUE(answer.data && answer.data->customerInfo && answer.data->customerInfo->accessToken);
  const std::string spoiled = *answer.data->customerInfo->accessToken + "\r\nX-Injected: yes";
  answer.data->customerInfo->accessToken = spoiled;
  sandbox_.setFault(sandbox::kCustomerBidPath, sandbox::Fault::Custom(200, answer.encode()));
  Settle();
  sandbox_.clearRequests();

  // The reader logs in; the paywall stores the session the answer carried.
  PaywallHost host(seed::kNormalArticleUrl);
  auto paywall = host.load(Position::bottom);
  Settle();
  ASSERT_TRUE(PaywallLook::Of(*paywall, host).offersCard());
  ASSERT_TRUE(paywall->btnUnlock->tap());
  auto screen = std::dynamic_pointer_cast<WebLoginVC>(paywall->presentedViewController());
  ASSERT_NE(screen, nullptr);
  ASSERT_TRUE(screen->webview->postMessageFromPage(kLoginScriptHandlerName,
                                                   {{"device_key", keys.deviceKey}, {"login_key", keys.loginKey}}));
  Settle();
  ASSERT_EQ(GlobalVariable::shared().getAccessToken(), spoiled);
  const PaywallLook card = PaywallLook::Of(*paywall, host);
  ASSERT_TRUE(card.offersCard());

  // The reader pays: nothing goes out, the card stays.
  log_.clear();
  const std::size_t before = TransfersSoFar();
  ASSERT_TRUE(paywall->btnUnlock->tap());
  Settle();
  host.advance(std::chrono::seconds(6));
  EXPECT_EQ(TransfersSoFar(), before);
  EXPECT_TRUE(sandbox_.requestsTo(sandbox::kAcceptBidPath).empty());
  EXPECT_FALSE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
  EXPECT_EQ(LinesSaying(kNotSent), 1);
  EXPECT_EQ(PaywallLook::Of(*paywall, host), card);
}

}  // namespace
}  // namespace obolo
