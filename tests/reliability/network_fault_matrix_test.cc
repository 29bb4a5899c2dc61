// Every fault the sandbox injects against every one of the seven service
// calls, through NetworkManager over real sockets: which closure ran, with
// what, on which thread, and that nothing the client does touches the stored
// session.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "entry/constants.h"
#include "network/network_manager.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"

OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using reliability::StoredSession;
using testing::CallProbe;
namespace seed = sandbox::seed;

// What one call reported back: no closure, onFailure's text, or completion's
// verdict, message and whether it carried its data (LogoutData: its `data`).
struct Reported {
  enum class Closure { kNeither, kCompletion, kOnFailure } closure = Closure::kNeither;
  std::string failure;
  std::optional<bool> success;
  std::optional<std::string> message;
  bool data = false;
  bool operator==(const Reported&) const = default;
};

void PrintTo(const Reported& r, std::ostream* out) {
  if (r.closure == Reported::Closure::kNeither) *out << "no closure";
  if (r.closure == Reported::Closure::kOnFailure) *out << "onFailure(\"" << r.failure << "\")";
  if (r.closure == Reported::Closure::kCompletion) {
    *out << "completion(success " << (r.success ? (*r.success ? "true" : "false") : "absent") << ", message "
         << r.message.value_or("absent") << ", data " << r.data << ")";
  }
}

const Reported kNeither;
Reported Fails(std::string sentence) { return {Reported::Closure::kOnFailure, std::move(sentence), {}, {}, false}; }
Reported Completes(std::optional<bool> success, std::optional<std::string> message = {}, bool data = false) {
  return {Reported::Closure::kCompletion, "", success, std::move(message), data};
}
Reported WrongType(const char* member, const char* type) {
  return Fails(std::string(R"(The data couldn't be read because ")") + member + "\" should be " + type +
               " but is a string.");
}

constexpr char kNotJson[] = "The data couldn't be read because it isn't valid JSON.";
constexpr char kEmptyData[] = "The data couldn't be read because the data is empty.";
constexpr char kLogoutDataMissing[] = R"(The data couldn't be read because "data" is missing.)";

enum Call { kLoggedOutBid, kLoggedInBid, kCustomerBid, kNextAccessToken, kAcceptBid, kBalance, kLogout, kCallCount };
constexpr std::array<const char*, kCallCount> kCallPaths = {
    sandbox::kCreateLoggedOutBidPath, sandbox::kCreateLoggedInBidPath, sandbox::kCustomerBidPath,
    sandbox::kNextAccessTokenPath,    sandbox::kAcceptBidPath,         sandbox::kBalanceAndArticlePath,
    sandbox::kLogoutDevicePath};

class NetworkFaultMatrixTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override {
    session_ = sandbox_.createSession(seed::kReaderEmail).value();
    reliability::StoreSession(session_);
    // A logged-in reader, with the calls' records filled as the kit fills
    // them, so that an answer worked out normally is a success.
    bid_.articleUrl = seed::kNormalArticleUrl;
    bid_.category = seed::kCategory;
    bid_.publisherCustomerId = seed::kPublisherCustomerId;
    bid_.publisherDomain = seed::kPublisherDomain;
    bid_.ipAddress = std::string(IP_ADDRESS);
    bid_.userAgent = std::string(USER_AGENT);
    loggedInBid_ = bid_;
    loggedInBid_.accessKey = seed::kPublisherAccessKey;
    loggedInBid_.customerId = session_.customerId;
    const auto offer = Bid(loggedInBid_, true);
    const auto anonymous = Bid(bid_, false);
    ASSERT_TRUE(offer && anonymous);
    accept_.oboloBidId = offer->oboloBidId.value();
    accept_.oboloTransactionMode = offer->oboloTransactionMode.value_or("");
    // The customer bid completes a login on a bid made for a logged-out reader.
    const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
    customer_.deviceKey = keys.deviceKey;
    customer_.loginToken = keys.loginKey;
    customer_.oboloBidId = anonymous->oboloBidId.value();
    refresh_.deviceKey = logout_.deviceKey = session_.deviceKey;
    refresh_.email = logout_.email = session_.email;
    refresh_.refreshToken = session_.refreshToken;
    balance_.customerId = session_.customerId;
    balance_.publisherId = seed::kPublisherId;
  }

  std::optional<DataSet> Bid(const CreateLoggedBidParam& param, bool loggedIn) {
    CallProbe<OboloData> probe;
    (network_.*(loggedIn ? &NetworkManager::createLoggedInBid : &NetworkManager::createLoggedOutBid))(
        param, probe.completion(), probe.onFailure());
    if (!probe.wait() || !probe.envelope() || !probe.envelope()->data) return std::nullopt;
    return probe.envelope()->data;
  }

  // Issues the call; the result reads what it reported once the transfer is
  // over, and checks the thread and the number of closures.
  std::function<Reported()> Issue(Call call) {
    switch (call) {
      case kLoggedOutBid: return Issue<OboloData>(&NetworkManager::createLoggedOutBid, bid_);
      case kLoggedInBid: return Issue<OboloData>(&NetworkManager::createLoggedInBid, loggedInBid_);
      case kCustomerBid: return Issue<OboloData>(&NetworkManager::customerBid, customer_);
      case kNextAccessToken: return Issue<NextTokenData>(&NetworkManager::getNextAccessToken, refresh_);
      case kAcceptBid: return Issue<OboloData>(&NetworkManager::acceptBid, accept_);
      case kBalance: return Issue<BalanceAndArticleData>(&NetworkManager::getBalanceAndArticles, balance_);
      default: return Issue<LogoutData>(&NetworkManager::logout, logout_);
    }
  }

  template <class Envelope, class Method, class Param>
  std::function<Reported()> Issue(Method method, const Param& param) {
    CallProbe<Envelope> probe;
    (network_.*method)(param, probe.completion(), probe.onFailure());
    return [probe] {
      EXPECT_LE(probe.calls(), 1) << "at most one closure, at most once";
      Reported r;
      if (probe.calls() > 0) {
        EXPECT_TRUE(probe.ranOnSessionThread());
      }
      if (auto failure = probe.failure()) {
        r = Fails(*failure);
      } else if (auto envelope = probe.envelope()) {
        bool data;
        if constexpr (std::is_same_v<Envelope, LogoutData>) {
          data = envelope->data;
        } else {
          data = envelope->data.has_value();
        }
        r = Completes(envelope->success, envelope->message, data);
      }
      return r;
    };
  }

  void SettleCalls() { ASSERT_TRUE(transfers_.waitForHandled(static_cast<int>(TransfersSoFar()))); }

  NetworkManager& network_ = NetworkManager::shared();
  sandbox::SessionKeys session_;
  CreateLoggedBidParam bid_, loggedInBid_;
  CustomerBidParam customer_;
  NextTokenParam refresh_;
  AcceptBidParam accept_;
  BalanceAndArticleParam balance_;
  LogoutParam logout_;
};

TEST_F(NetworkFaultMatrixTest, EachFaultOnEachCallReportsAsStated) {
  reliability::CaseCount cases("NetworkManager, 9 faults x 7 calls");
  const std::string no = reliability::kRefusal;
  // Columns: logged-out bid, logged-in bid, customer bid, token refresh,
  // accept, balance, logout. Only the logged-in bid judges `success`; {}
  // decodes into every envelope but LogoutData, whose `data` is required.
  const std::array<std::array<Reported, kCallCount>, 9> expected = {{
      {Completes({}), Fails(""), Completes({}), Completes({}), Completes({}), Completes({}),
       Fails(kLogoutDataMissing)},
      {Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson),
       Fails(kNotJson)},
      {Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson),
       Fails(kNotJson)},
      {WrongType("data.oboloBidId", "an integer"), WrongType("data.oboloBidId", "an integer"),
       WrongType("data.oboloBidId", "an integer"), WrongType("data.deviceId", "an integer"),
       WrongType("data.oboloBidId", "an integer"), WrongType("data.balance", "a number"),
       WrongType("data", "a boolean")},
      {Completes(false, no), Fails(no), Completes(false, no), Completes(false, no), Completes(false, no),
       Completes(false, no), Fails(kLogoutDataMissing)},
      {Completes(false), Fails(""), Completes(false), Completes(false), Completes(false), Completes(false),
       Fails(kLogoutDataMissing)},
      {Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData),
       Fails(kEmptyData), Fails(kEmptyData)},
      {kNeither, kNeither, kNeither, kNeither, kNeither, kNeither, kNeither},
      // A slow answer is waited for and is the normal answer (its message is
      // the service's own text: only its presence matters).
      {Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true),
       Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true)},
  }};
  const auto faults = reliability::AllFaults();
  for (std::size_t row = 0; row < faults.size(); ++row) {
    SCOPED_TRACE(faults[row].name);
    const StoredSession before = StoredSession::Read();
    for (const char* path : kCallPaths) sandbox_.setFault(path, faults[row].fault);
    // Six calls at once; the logout after them, so that in the slow row the
    // device is still logged in while the others are worked out.
    std::vector<std::function<Reported()>> outcomes;
    for (int call = 0; call < kLogout; ++call) outcomes.push_back(Issue(static_cast<Call>(call)));
    SettleCalls();
    outcomes.push_back(Issue(kLogout));
    SettleCalls();
    for (int call = 0; call < kCallCount; ++call) {
      SCOPED_TRACE(kCallPaths[call]);
      ++cases;
      Reported reported = outcomes[call]();
      if (faults[row].fault.kind == sandbox::FaultKind::kSlowAnswer) reported.message.reset();
      EXPECT_EQ(reported, expected[row][call]);
    }
    EXPECT_EQ(StoredSession::Read(), before) << "the client stores nothing, whatever it was answered";
  }
  // The slow row let the service work: the last calls really went through.
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), true);
  EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
}

// A connection closed after the service read the request is a lost answer,
// not an invitation to send it again: the service may have acted on it (paid,
// spent the one-time login key, logged the device out).
TEST_F(NetworkFaultMatrixTest, AConnectionClosedWithoutAnAnswerNeverLeadsToASecondRequest) {
  reliability::CaseCount cases("NetworkManager, a connection closed without an answer x 7 calls");
  for (int call = 0; call < kCallCount; ++call) {
    SCOPED_TRACE(kCallPaths[call]);
    ++cases;
    auto warm = Issue(kBalance);  // a connection that could be kept for this call
    SettleCalls();
    ASSERT_EQ(warm().closure, Reported::Closure::kCompletion);
    sandbox_.clearRequests();
    sandbox_.setFault(kCallPaths[call], sandbox::Fault::Once(sandbox::FaultKind::kCloseWithoutResponse));
    auto outcome = Issue(static_cast<Call>(call));
    SettleCalls();
    EXPECT_EQ(outcome(), kNeither);
    EXPECT_EQ(sandbox_.requestsTo(kCallPaths[call]).size(), 1u) << "the service got the request once";
  }
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), false);
  EXPECT_FALSE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
}

}  // namespace
}  // namespace obolo
