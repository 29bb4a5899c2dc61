// What the sandbox records of each request, which the kit's tests check on
// the wire: header names as sent, exact bodies, raw queries, arrival order.

#include <gtest/gtest.h>

#include <string>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using RecordingTest = SandboxTest;

TEST_F(RecordingTest, HeaderCaseBodiesAndQueriesAreKeptAsSentInArrivalOrder) {
  auto send = [&](const std::string& method, const std::string& url, std::vector<std::string> headers,
                  std::string body) {
    return Send({.method = method, .url = url, .headers = std::move(headers), .body = std::move(body),
                 .caFile = sandbox_.caFile()});
  };
  const std::string body = "{\"oboloBidId\":12,  \"oboloTransactionMode\":\"normal\"}";
  send("PUT", sandbox_.baseUrl() + kAcceptBidPath,
       {"Content-Type: Application/json", "Authorization: Bearer t0ken"}, body);
  send("POST", sandbox_.baseUrl() + kCreateLoggedInBidPath,
       {"content-type: application/json", "X-Padded: value   ", "Authorization: Bearer "}, "{}");
  send("POST", sandbox_.baseUrl() + "/not/a/route", {}, "{}");
  const std::string page = sandbox_.loginPageUrl(seed::kPublisherId, 345);
  ASSERT_EQ(send("GET", page, {}, "").status, 200);

  auto requests = sandbox_.requests();
  ASSERT_EQ(requests.size(), 3u) << "unknown routes are answered, not recorded";
  const RecordedRequest& accept = requests[0];
  EXPECT_EQ(accept.method, "PUT");
  EXPECT_EQ(accept.path, kAcceptBidPath);
  EXPECT_EQ(accept.body, body);
  EXPECT_EQ(accept.headerExactly("Content-Type"), "Application/json");
  EXPECT_EQ(accept.headerExactly("content-type"), std::nullopt);
  EXPECT_EQ(accept.headerExactly("Authorization"), "Bearer t0ken");

  const RecordedRequest& bid = requests[1];
  EXPECT_EQ(bid.headerExactly("content-type"), "application/json");
  EXPECT_EQ(bid.headerExactly("Content-Type"), std::nullopt);
  EXPECT_EQ(bid.header("CONTENT-TYPE"), "application/json");
  EXPECT_EQ(bid.headerExactly("X-Padded"), "value");
  EXPECT_EQ(bid.headerExactly("Authorization"), "Bearer");
  for (const auto& [name, value] : bid.headers) {
    EXPECT_TRUE(name.find("REMOTE_") == std::string::npos && name.find("LOCAL_") == std::string::npos)
        << "only what the client sent: " << name;
  }

  EXPECT_EQ(requests[2].path, kLoginPagePath);
  EXPECT_EQ(sandbox_.baseUrl() + "/?" + requests[2].query, page);
  EXPECT_EQ(sandbox_.requestsTo(kAcceptBidPath).size(), 1u);

  sandbox_.clearRequests();
  EXPECT_TRUE(sandbox_.requests().empty());
}

}  // namespace
}  // namespace obolo::sandbox::testing
