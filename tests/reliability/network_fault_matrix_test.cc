// Every fault the sandbox injects against every one of the seven service
// calls, through NetworkManager over real sockets: which closure ran, with
// what, and that nothing the client does touches the stored session.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "entry/constants.h"
#include "entry/global_variable.h"
#include "network/network_manager.h"
#include "platform/log.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using reliability::AllFaults;
using reliability::StoredSession;
using testing::CallProbe;
using testing::SandboxEnvironment;
namespace seed = sandbox::seed;

// What one call reported back.
struct Reported {
  enum class Closure { kNeither, kCompletion, kOnFailure };
  Closure closure = Closure::kNeither;
  std::string failure;  // onFailure's text
  // completion's envelope: its verdict, its message, and whether it carried
  // its data (LogoutData: the value of its required `data`).
  std::optional<bool> success;
  std::optional<std::string> message;
  bool data = false;

  bool operator==(const Reported&) const = default;
};

void PrintTo(const Reported& reported, std::ostream* out) {
  switch (reported.closure) {
    case Reported::Closure::kNeither:
      *out << "no closure";
      return;
    case Reported::Closure::kOnFailure:
      *out << "onFailure(\"" << reported.failure << "\")";
      return;
    case Reported::Closure::kCompletion:
      *out << "completion(success " << (reported.success ? (*reported.success ? "true" : "false") : "absent")
           << ", message " << (reported.message ? "\"" + *reported.message + "\"" : "absent") << ", data "
           << (reported.data ? "yes" : "no") << ")";
      return;
  }
}

Reported Neither() { return {}; }
Reported Fails(std::string sentence) { return {Reported::Closure::kOnFailure, std::move(sentence), {}, {}, false}; }
Reported Completes(std::optional<bool> success, std::optional<std::string> message, bool data) {
  return {Reported::Closure::kCompletion, "", success, std::move(message), data};
}

// The decoding sentences the client hands to onFailure.
constexpr char kNotJson[] = "The data couldn't be read because it isn't valid JSON.";
constexpr char kEmptyData[] = "The data couldn't be read because the data is empty.";
constexpr char kLogoutDataMissing[] = R"(The data couldn't be read because "data" is missing.)";

// The seven calls, in the order of the matrix's columns.
enum Call { kLoggedOutBid, kLoggedInBid, kCustomerBid, kNextAccessToken, kAcceptBid, kBalance, kLogout, kCallCount };
constexpr std::array<const char*, kCallCount> kCallNames = {
    "createLoggedOutBid", "createLoggedInBid", "customerBid", "getNextAccessToken",
    "acceptBid",          "getBalanceAndArticles", "logout"};
constexpr std::array<const char*, kCallCount> kCallPaths = {
    sandbox::kCreateLoggedOutBidPath, sandbox::kCreateLoggedInBidPath, sandbox::kCustomerBidPath,
    sandbox::kNextAccessTokenPath,    sandbox::kAcceptBidPath,         sandbox::kBalanceAndArticlePath,
    sandbox::kLogoutDevicePath};

// A probe for one call that can say, once the transfer is over, what was
// reported and whether it came on the HTTP session's thread.
class Outcome {
 public:
  template <class Envelope>
  explicit Outcome(CallProbe<Envelope> probe)
      : read_([probe] {
          Reported reported;
          if (probe.calls() == 0) return reported;
          if (auto failure = probe.failure()) {
            reported.closure = Reported::Closure::kOnFailure;
            reported.failure = *failure;
          } else if (auto envelope = probe.envelope()) {
            reported.closure = Reported::Closure::kCompletion;
            reported.success = envelope->success;
            reported.message = envelope->message;
            if constexpr (std::is_same_v<Envelope, LogoutData>) {
              reported.data = envelope->data;
            } else {
              reported.data = envelope->data.has_value();
            }
          }
          return reported;
        }),
        calls_([probe] { return probe.calls(); }),
        on_session_thread_([probe] { return probe.ranOnSessionThread(); }) {}

  Reported reported() const { return read_(); }
  int calls() const { return calls_(); }
  bool ranOnSessionThread() const { return on_session_thread_(); }

 private:
  std::function<Reported()> read_;
  std::function<int()> calls_;
  std::function<bool()> on_session_thread_;
};

class NetworkFaultMatrixTest : public ::testing::Test {
 protected:
  void SetUp() override {
    sandbox_.reset();
    SetLogSink(NullLogSink());
    session_ = sandbox_.createSession(seed::kReaderEmail).value();
    reliability::StoreSession(session_);
    // A logged-in reader with the calls' records filled as the kit fills them,
    // so that an answer the sandbox works out normally is a success.
    bid_.articleUrl = seed::kNormalArticleUrl;
    bid_.category = seed::kCategory;
    bid_.publisherCustomerId = seed::kPublisherCustomerId;
    bid_.publisherDomain = seed::kPublisherDomain;
    bid_.ipAddress = std::string(IP_ADDRESS);
    bid_.userAgent = std::string(USER_AGENT);
    loggedInBid_ = bid_;
    loggedInBid_.accessKey = seed::kPublisherAccessKey;
    loggedInBid_.customerId = session_.customerId;

    CallProbe<OboloData> offer;
    network_.createLoggedInBid(loggedInBid_, offer.completion(), offer.onFailure());
    ++issued_;
    ASSERT_TRUE(offer.wait());
    ASSERT_TRUE(offer.envelope() && offer.envelope()->data && offer.envelope()->data->oboloBidId);
    const DataSet data = *offer.envelope()->data;
    accept_.oboloBidId = *data.oboloBidId;
    accept_.oboloTransactionMode = data.oboloTransactionMode.value_or("");

    // The customer bid completes a login on a bid made for a logged-out reader.
    CallProbe<OboloData> anonymous;
    network_.createLoggedOutBid(bid_, anonymous.completion(), anonymous.onFailure());
    ++issued_;
    ASSERT_TRUE(anonymous.wait());
    ASSERT_TRUE(anonymous.envelope() && anonymous.envelope()->data && anonymous.envelope()->data->oboloBidId);
    const auto keys = sandbox_.issueLoginKeys(seed::kReaderEmail).value();
    customer_.deviceKey = keys.deviceKey;
    customer_.loginToken = keys.loginKey;
    customer_.oboloBidId = *anonymous.envelope()->data->oboloBidId;

    refresh_.deviceKey = session_.deviceKey;
    refresh_.email = session_.email;
    refresh_.refreshToken = session_.refreshToken;

    balance_.customerId = session_.customerId;
    balance_.publisherId = seed::kPublisherId;

    logout_.deviceKey = session_.deviceKey;
    logout_.email = session_.email;
  }

  void TearDown() override { SetLogSink({}); }

  // Issues the call and returns its outcome, readable once the transfer is over.
  Outcome Issue(Call call) {
    ++issued_;
    switch (call) {
      case kLoggedOutBid:
        return Issue<OboloData>(
            [&](auto done, auto failed) { network_.createLoggedOutBid(bid_, std::move(done), std::move(failed)); });
      case kLoggedInBid:
        return Issue<OboloData>([&](auto done, auto failed) {
          network_.createLoggedInBid(loggedInBid_, std::move(done), std::move(failed));
        });
      case kCustomerBid:
        return Issue<OboloData>(
            [&](auto done, auto failed) { network_.customerBid(customer_, std::move(done), std::move(failed)); });
      case kNextAccessToken:
        return Issue<NextTokenData>([&](auto done, auto failed) {
          network_.getNextAccessToken(refresh_, std::move(done), std::move(failed));
        });
      case kAcceptBid:
        return Issue<OboloData>(
            [&](auto done, auto failed) { network_.acceptBid(accept_, std::move(done), std::move(failed)); });
      case kBalance:
        return Issue<BalanceAndArticleData>([&](auto done, auto failed) {
          network_.getBalanceAndArticles(balance_, std::move(done), std::move(failed));
        });
      case kLogout:
      case kCallCount:
        break;
    }
    return Issue<LogoutData>(
        [&](auto done, auto failed) { network_.logout(logout_, std::move(done), std::move(failed)); });
  }

  template <class Envelope, class Send>
  Outcome Issue(Send send) {
    CallProbe<Envelope> probe;
    send(probe.completion(), probe.onFailure());
    return Outcome(probe);
  }

  // Waits until every transfer issued so far has been handled: a closure that
  // was going to run has run by then.
  bool Settled() { return transfers_.waitForHandled(issued_); }

  testing::TemporaryStore store_;
  testing::TransferObserver transfers_;
  sandbox::Sandbox& sandbox_ = SandboxEnvironment::sandbox();
  NetworkManager& network_ = NetworkManager::shared();
  sandbox::SessionKeys session_;
  int issued_ = 0;

  CreateLoggedBidParam bid_;
  CreateLoggedBidParam loggedInBid_;
  CustomerBidParam customer_;
  NextTokenParam refresh_;
  AcceptBidParam accept_;
  BalanceAndArticleParam balance_;
  LogoutParam logout_;
};

TEST_F(NetworkFaultMatrixTest, EachFaultOnEachCallReportsAsStated) {
  const std::string refusal = reliability::kRefusal;
  // Columns: logged-out bid, logged-in bid, customer bid, token refresh,
  // accept, balance, logout.
  const std::array<std::array<Reported, kCallCount>, 9> expected = {{
      // 500 with {}: the status is not looked at; {} decodes into every
      // envelope but LogoutData, and the logged-in bid reads no success as false.
      {Completes({}, {}, false), Fails(""), Completes({}, {}, false), Completes({}, {}, false),
       Completes({}, {}, false), Completes({}, {}, false), Fails(kLogoutDataMissing)},
      // HTML error page.
      {Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson),
       Fails(kNotJson)},
      // Malformed JSON.
      {Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson), Fails(kNotJson),
       Fails(kNotJson)},
      // One member of the wrong type: the sentence names it.
      {Fails(R"(The data couldn't be read because "data.oboloBidId" should be an integer but is a string.)"),
       Fails(R"(The data couldn't be read because "data.oboloBidId" should be an integer but is a string.)"),
       Fails(R"(The data couldn't be read because "data.oboloBidId" should be an integer but is a string.)"),
       Fails(R"(The data couldn't be read because "data.deviceId" should be an integer but is a string.)"),
       Fails(R"(The data couldn't be read because "data.oboloBidId" should be an integer but is a string.)"),
       Fails(R"(The data couldn't be read because "data.balance" should be a number but is a string.)"),
       Fails(R"(The data couldn't be read because "data" should be a boolean but is a string.)")},
      // success false with a message: only the logged-in bid judges it.
      {Completes(false, refusal, false), Fails(refusal), Completes(false, refusal, false),
       Completes(false, refusal, false), Completes(false, refusal, false), Completes(false, refusal, false),
       Fails(kLogoutDataMissing)},
      // success false without a message.
      {Completes(false, {}, false), Fails(""), Completes(false, {}, false), Completes(false, {}, false),
       Completes(false, {}, false), Completes(false, {}, false), Fails(kLogoutDataMissing)},
      // An empty body is a body: it does not decode.
      {Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData), Fails(kEmptyData),
       Fails(kEmptyData), Fails(kEmptyData)},
      // No response at all: no closure.
      {Neither(), Neither(), Neither(), Neither(), Neither(), Neither(), Neither()},
      // A slow answer is waited for and is the normal answer.
      {Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true),
       Completes(true, {}, true), Completes(true, {}, true), Completes(true, {}, true)},
  }};
  const auto faults = AllFaults();
  static_assert(faults.size() == expected.size());

  int cases = 0;
  for (std::size_t row = 0; row < faults.size(); ++row) {
    SCOPED_TRACE(faults[row].name);
    const StoredSession before = StoredSession::Read();
    for (const char* path : kCallPaths) sandbox_.setFault(path, faults[row].fault);

    // Six calls at once; the logout after them, so that in the slow row the
    // device is still logged in while the others are worked out.
    std::vector<Outcome> outcomes;
    for (int call = 0; call < kLogout; ++call) outcomes.push_back(Issue(static_cast<Call>(call)));
    ASSERT_TRUE(Settled());
    outcomes.push_back(Issue(kLogout));
    ASSERT_TRUE(Settled());

    for (int call = 0; call < kCallCount; ++call) {
      SCOPED_TRACE(kCallNames[call]);
      const Outcome& outcome = outcomes[call];
      Reported reported = outcome.reported();
      // The slow answer's message is the service's own text: only its
      // presence matters here.
      if (faults[row].fault.kind == sandbox::FaultKind::kSlowAnswer) reported.message.reset();
      EXPECT_EQ(reported, expected[row][call]);
      EXPECT_LE(outcome.calls(), 1) << "at most one closure, at most once";
      if (outcome.calls() == 1) {
        EXPECT_TRUE(outcome.ranOnSessionThread());
      }
      ++cases;
    }
    // The client stores nothing, whatever it was answered.
    EXPECT_EQ(StoredSession::Read(), before);
  }
  // The slow row let the service work: the last calls really went through.
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), true);
  EXPECT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));

  reliability::ReportFaultMatrixCases("NetworkManager, 9 faults x 7 calls", cases);
  EXPECT_EQ(cases, 63);
}

// A connection that the service closes after reading a request is a lost
// answer, not an invitation to send the request again: the service may have
// acted on it (paid, spent the one-time login key, logged the device out).
TEST_F(NetworkFaultMatrixTest, AConnectionClosedWithoutAnAnswerNeverLeadsToASecondRequest) {
  for (int call = 0; call < kCallCount; ++call) {
    SCOPED_TRACE(kCallNames[call]);
    // A call just before, whose connection could be kept for this one.
    Outcome warm = Issue(kBalance);
    ASSERT_TRUE(Settled());
    ASSERT_EQ(warm.reported().closure, Reported::Closure::kCompletion);

    sandbox_.clearRequests();
    sandbox_.setFault(kCallPaths[call], sandbox::Fault::Once(sandbox::FaultKind::kCloseWithoutResponse));
    Outcome outcome = Issue(static_cast<Call>(call));
    ASSERT_TRUE(Settled());
    EXPECT_EQ(outcome.reported(), Neither());
    EXPECT_EQ(sandbox_.requestsTo(kCallPaths[call]).size(), 1u) << "the service got the request once";
  }
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(session_.deviceKey), false);
  EXPECT_FALSE(sandbox_.ownsArticle(seed::kReaderEmail, seed::kNormalArticleUrl));
}

}  // namespace
}  // namespace obolo
