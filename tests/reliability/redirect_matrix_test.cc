// Every redirect status against each of the seven service calls, the 3xx
// answer pointing at the service's own address, at another HTTPS origin the
// kit trusts, and at a plain-HTTP origin. No call follows: the 3xx answer is
// the answer, read exactly as the same body under HTTP 200 is read; the
// service gets each request once (a payment once, however often it is told
// to look elsewhere), and no request of any call reaches the other origins.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <functional>
#include <string>

#include "network/network_manager.h"
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/loopback_origin.h"

OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using testing::LoopbackOrigin;

// The origins redirects point at besides the service's own, started once the
// sandbox runs. The kit trusts the HTTPS one as it trusts the sandbox, so a
// redirect it followed would get there.
class OtherOrigins : public ::testing::Environment {
 public:
  void SetUp() override {
    ASSERT_TRUE(https.start() && http.start()) << "the other origins did not start";
    const std::string trusted = LoopbackOrigin::TrustedFile(testing::SandboxEnvironment::sandbox().caFile());
    setenv("OBOLO_CA_FILE", trusted.c_str(), 1);  // read by the kit at its first transfer
  }
  LoopbackOrigin https{true};
  LoopbackOrigin http{false};
};
// Registered after the sandbox's environment, so set up after it.
OtherOrigins* const others = static_cast<OtherOrigins*>(::testing::AddGlobalTestEnvironment(new OtherOrigins));

enum Call { kLoggedOutBid, kLoggedInBid, kCustomerBid, kNextAccessToken, kAcceptBid, kBalance, kLogout, kCallCount };
constexpr const char* kCallPaths[kCallCount] = {
    sandbox::kCreateLoggedOutBidPath, sandbox::kCreateLoggedInBidPath, sandbox::kCustomerBidPath,
    sandbox::kNextAccessTokenPath,    sandbox::kAcceptBidPath,         sandbox::kBalanceAndArticlePath,
    sandbox::kLogoutDevicePath};

class RedirectMatrixTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override { reliability::StoreSession(sandbox_.createSession(sandbox::seed::kReaderEmail).value()); }

  // Issues the call, lets its transfer end and returns what it reported:
  // "no closure", "onFailure: <text>" or "completion: <the whole record>".
  std::string Outcome(Call call) {
    std::function<std::string()> read;
    switch (call) {
      case kLoggedOutBid: read = Issue(&NetworkManager::createLoggedOutBid); break;
      case kLoggedInBid: read = Issue(&NetworkManager::createLoggedInBid); break;
      case kCustomerBid: read = Issue(&NetworkManager::customerBid); break;
      case kNextAccessToken: read = Issue(&NetworkManager::getNextAccessToken); break;
      case kAcceptBid: read = Issue(&NetworkManager::acceptBid); break;
      case kBalance: read = Issue(&NetworkManager::getBalanceAndArticles); break;
      default: read = Issue(&NetworkManager::logout); break;
    }
    Settle();
    return read();
  }

  template <class Envelope, class Param>
  std::function<std::string()> Issue(void (NetworkManager::*method)(const Param&, Completion<Envelope>, OnFailure)
                                         const) {
    testing::CallProbe<Envelope> probe;
    (NetworkManager::shared().*method)(Param{}, probe.completion(), probe.onFailure());
    return [probe] {
      EXPECT_LE(probe.calls(), 1) << "at most one closure, at most once";
      if (auto failure = probe.failure()) return "onFailure: " + *failure;
      if (auto envelope = probe.envelope()) return "completion: " + envelope->description();
      return std::string("no closure");
    };
  }
};

TEST_F(RedirectMatrixTest, NoCallFollowsARedirectAndTheRedirectsBodyIsTheAnswer) {
  reliability::CaseCount cases("NetworkManager, 5 redirect statuses x 7 calls x 3 targets x 2 bodies");
  const int statuses[] = {301, 302, 303, 307, 308};
  const struct {
    const char* what;
    std::string origin;
  } targets[] = {
      {"the service's own address", sandbox_.baseUrl()},
      {"another HTTPS origin", others->https.baseUrl()},
      {"a plain-HTTP origin", others->http.baseUrl()},
  };
  const struct {
    const char* what;
    const char* contentType;
    std::string text;
    bool json;
  } bodies[] = {
      {"a JSON refusal", "application/json", R"({"success":false,"message":"Moved elsewhere"})", true},
      {"an HTML page", "text/html", "<html><body>Moved <a href=\"/elsewhere\">here</a></body></html>", false},
  };

  for (int call = 0; call < kCallCount; ++call) {
    const std::string path = kCallPaths[call];
    SCOPED_TRACE(path);
    for (const auto& body : bodies) {
      SCOPED_TRACE(body.what);
      // The same body under HTTP 200: a JSON body decodes (the logged-in bid
      // turns a refusal into onFailure, logout needs its `data`), HTML fails.
      sandbox::Fault plain = sandbox::Fault::Custom(200, body.text);
      plain.contentType = body.contentType;
      sandbox_.setFault(path, plain);
      const std::string baseline = Outcome(static_cast<Call>(call));
      const bool decodes = body.json && call != kLoggedInBid && call != kLogout;
      EXPECT_TRUE(baseline.starts_with(decodes ? "completion: " : "onFailure: ")) << baseline;

      for (int status : statuses) {
        for (const auto& target : targets) {
          SCOPED_TRACE(std::to_string(status) + " to " + target.what);
          ++cases;
          sandbox_.clearRequests();
          // However often the service is asked again, it answers the same.
          sandbox::Fault redirect =
              sandbox::Fault::Redirect(status, target.origin + path, body.text, sandbox::Fault::kUntilCleared);
          redirect.contentType = body.contentType;
          sandbox_.setFault(path, redirect);
          EXPECT_EQ(Outcome(static_cast<Call>(call)), baseline);
          sandbox_.clearFault(path);
          EXPECT_EQ(sandbox_.requests().size(), 1u) << "the service got the request once";
        }
      }
    }
  }
  EXPECT_EQ(others->https.requests().size(), 0u) << "nothing reached the other HTTPS origin";
  EXPECT_EQ(others->http.requests().size(), 0u) << "nothing reached the plain-HTTP origin";
}

}  // namespace
}  // namespace obolo
