// A started sandbox per test (HTTPS unless asked otherwise) with a wire client.

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
  return {{"articleUrl", article_url}, {"category", seed::kCategory},
          {"isCustomerLoggedIn", false}, {"publisherCustomerId", seed::kPublisherCustomerId},
          {"publisherDomain", seed::kPublisherDomain}};
}

class SandboxTest : public ::testing::Test {
 protected:
  explicit SandboxTest(bool https = true) : sandbox_(SandboxOptions{.https = https}), client_(sandbox_) {}

  void SetUp() override { ASSERT_TRUE(sandbox_.start()) << sandbox_.error(); }

  WireResponse bid(const std::string& article_url = seed::kNormalArticleUrl) {
    return client_.call("POST", kCreateLoggedOutBidPath, BidBody(article_url));
  }

  Sandbox sandbox_;
  SandboxClient client_;
};

}  // namespace obolo::sandbox::testing

#endif  // OBOLO_TESTS_SANDBOX_SANDBOX_FIXTURE_H_
