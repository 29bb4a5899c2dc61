// A started HTTPS sandbox per test, with a wire client and the request bodies
// the kit sends.

#ifndef OBOLO_TESTS_SANDBOX_SANDBOX_FIXTURE_H_
#define OBOLO_TESTS_SANDBOX_SANDBOX_FIXTURE_H_

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "sandbox/sandbox.h"
#include "wire_client.h"

namespace obolo::sandbox::testing {

using nlohmann::json;

// The body of a logged-out bid for `article_url` at the seeded publisher.
inline json BidBody(const std::string& article_url) {
  return {{"articleUrl", article_url},
          {"category", seed::kCategory},
          {"ipAddress", "0.0.0.0"},
          {"isCustomerLoggedIn", false},
          {"isSIMEnabled", false},
          {"publisherCustomerId", seed::kPublisherCustomerId},
          {"publisherDomain", seed::kPublisherDomain},
          {"userAgent", "OboloKit/1.0 (iPhone; iOS 17.0)"}};
}

// The body of a logged-in bid: the logged-out one plus access key and customer.
inline json LoggedInBidBody(const std::string& article_url, std::int64_t customer_id) {
  json body = BidBody(article_url);
  body["accessKey"] = seed::kPublisherAccessKey;
  body["customerId"] = customer_id;
  return body;
}

class SandboxTest : public ::testing::Test {
 protected:
  explicit SandboxTest(SandboxOptions options = {}) : sandbox_(options), client_(sandbox_) {}

  void SetUp() override { ASSERT_TRUE(sandbox_.start()) << sandbox_.error(); }

  // Creates a logged-out bid and returns its DataSet.
  json loggedOutBid(const std::string& article_url) {
    WireResponse response = client_.call("POST", kCreateLoggedOutBidPath, BidBody(article_url));
    EXPECT_EQ(response.status, 200) << response.body;
    json answer = response.json();
    EXPECT_EQ(answer.value("success", false), true) << response.body;
    return answer.value("data", json::object());
  }

  // Logs the customer in the way the kit does after the login page: a
  // customer bid on `bid_id` with freshly issued login keys. Returns the
  // answer's CustomerInfoSet.
  json logIn(const std::string& email, std::int64_t bid_id) {
    auto keys = sandbox_.issueLoginKeys(email);
    EXPECT_TRUE(keys.has_value());
    if (!keys) return json::object();
    WireResponse response = client_.call(
        "POST", kCustomerBidPath,
        json{{"deviceKey", keys->deviceKey}, {"oboloBidId", bid_id}, {"loginToken", keys->loginKey}});
    EXPECT_EQ(response.status, 200) << response.body;
    return response.json().value("data", json::object()).value("customerInfo", json::object());
  }

  Sandbox sandbox_;
  SandboxClient client_;
};

}  // namespace obolo::sandbox::testing

#endif  // OBOLO_TESTS_SANDBOX_SANDBOX_FIXTURE_H_
