// Each fault kind as a plain client sees it on the wire, over HTTPS and HTTP:
// the kit's fault matrix relies on the faults being exactly these.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class FaultTest : public SandboxTest, public ::testing::WithParamInterface<bool> {
 protected:
  FaultTest() : SandboxTest(GetParam()) {}
};

TEST_P(FaultTest, EachKindReachesTheClientAsDescribedAndOnceMeansOnce) {
  Fault refusal = Fault::Once(FaultKind::kFailureWithMessage);
  refusal.message = "Bid expired";
  const std::string custom = R"({"data":{"recommendations":[{"articleId":"x"}]}})";
  struct Case {
    const char* what;
    Fault fault;
    long status;
    std::function<void(const WireResponse&)> check;
  };
  const Case cases[] = {
      {"server error", Fault::Once(FaultKind::kServerError), 500,
       [](const WireResponse& r) { EXPECT_EQ(r.body, "{}"); }},
      {"HTML error page", Fault::Once(FaultKind::kHtmlErrorPage), 502,
       [](const WireResponse& r) {
         EXPECT_EQ(r.contentType.rfind("text/html", 0), 0u) << r.contentType;
         EXPECT_NE(r.body.find("<html>"), std::string::npos);
       }},
      {"malformed JSON", Fault::Once(FaultKind::kMalformedJson), 200,
       [](const WireResponse& r) { EXPECT_TRUE(!r.body.empty() && r.json().is_discarded()) << r.body; }},
      {"wrong type", Fault::Once(FaultKind::kWrongType), 200,
       [](const WireResponse& r) { EXPECT_TRUE(r.json()["data"]["oboloBidId"].is_string()) << r.body; }},
      {"failure with a message", refusal, 200,
       [](const WireResponse& r) { EXPECT_EQ(r.json(), (json{{"success", false}, {"message", "Bid expired"}})); }},
      {"failure without a message", Fault::Once(FaultKind::kFailureWithoutMessage), 200,
       [](const WireResponse& r) { EXPECT_EQ(r.json(), (json{{"success", false}})); }},
      {"empty body", Fault::Once(FaultKind::kEmptyBody), 200,
       [](const WireResponse& r) { EXPECT_TRUE(r.code == CURLE_OK && r.body.empty()) << r.error; }},
      {"custom answer", Fault::Custom(418, custom), 418,
       [&](const WireResponse& r) {
         EXPECT_EQ(r.body, custom);
         EXPECT_EQ(r.contentType, "application/json");
         EXPECT_EQ(r.location, "");
       }},
      {"redirect", Fault::Redirect(307, "https://elsewhere.example/v2/obid/createLoggedOutBid", "{}"), 307,
       [&](const WireResponse& r) {
         EXPECT_EQ(r.location, "https://elsewhere.example/v2/obid/createLoggedOutBid");
         EXPECT_EQ(r.body, "{}");
       }},
      // No status line at all; the request was still recorded.
      {"close without a response", Fault::Once(FaultKind::kCloseWithoutResponse), 0,
       [&](const WireResponse& r) {
         EXPECT_TRUE(GetParam() ? r.code != CURLE_OK : r.code == CURLE_GOT_NOTHING) << r.error;
         EXPECT_EQ(r.body, "");
       }},
      {"slow answer", Fault::Slow(700ms), 200,
       [](const WireResponse& r) {
         EXPECT_GE(r.elapsed, 700ms);
         EXPECT_EQ(r.json()["data"]["articleId"], 501) << "the normal answer";
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    sandbox_.clearRequests();
    sandbox_.setFault(kCreateLoggedOutBidPath, c.fault);
    WireResponse response = bid();
    EXPECT_EQ(response.status, c.status) << response.error;
    c.check(response);
    EXPECT_EQ(sandbox_.requests().size(), 1u);
    WireResponse after = bid();
    EXPECT_EQ(after.status, 200);
    EXPECT_EQ(after.json()["success"], true) << after.body;
    if (c.fault.kind == FaultKind::kSlowAnswer) {
      EXPECT_LT(after.elapsed, 700ms);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(HttpsAndHttp, FaultTest, ::testing::Bool());

TEST_P(FaultTest, FaultsLastTheirCountOrUntilClearedOnTheirOwnRouteOnly) {
  sandbox_.setFault(kCreateLoggedOutBidPath, Fault::Times(FaultKind::kServerError, 2));
  sandbox_.setFault(kNextAccessTokenPath, Fault::Always(FaultKind::kEmptyBody));
  auto refresh = [&] { return client_.call("PUT", kNextAccessTokenPath, std::string("{}")).body; };
  EXPECT_EQ(bid().status, 500);
  EXPECT_EQ(bid().status, 500);
  EXPECT_EQ(bid().status, 200);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(refresh(), "");
  EXPECT_EQ(client_.call("PUT", kAcceptBidPath, std::string("{}")).status, 401) << "a neighbour is unaffected";
  sandbox_.clearFaults();
  EXPECT_NE(refresh(), "");
}

}  // namespace
}  // namespace obolo::sandbox::testing
