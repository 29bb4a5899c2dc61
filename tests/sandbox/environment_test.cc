// A test program that opts into the shared sandbox finds the kit's variables
// pointing at it before its first test runs.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "support/sandbox_environment.h"
#include "wire_client.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo::sandbox::testing {
namespace {

std::string Variable(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? std::string() : value;
}

TEST(SandboxEnvironmentTest, TheKitsVariablesNameTheRunningSandbox) {
  Sandbox& sandbox = obolo::testing::SandboxEnvironment::sandbox();
  ASSERT_TRUE(sandbox.isRunning());
  EXPECT_EQ(Variable("OBOLO_API_BASE_URL"), sandbox.baseUrl());
  EXPECT_EQ(Variable("OBOLO_WALLET_ORIGIN"), sandbox.baseUrl());
  EXPECT_EQ(Variable("OBOLO_REDIRECT_ORIGIN"), sandbox.baseUrl());
  EXPECT_EQ(Variable("OBOLO_LOGIN_LOGO_URL"), sandbox.logoUrl());
  EXPECT_EQ(Variable("OBOLO_CA_FILE"), sandbox.caFile());
  EXPECT_EQ(sandbox.baseUrl().rfind("https://", 0), 0u);
}

TEST(SandboxEnvironmentTest, AClientConfiguredOnlyFromTheVariablesReachesIt) {
  WireRequest request;
  request.url = Variable("OBOLO_API_BASE_URL") + kCreateLoggedOutBidPath;
  request.caFile = Variable("OBOLO_CA_FILE");
  request.headers = {"Content-Type: application/json"};
  request.body =
      R"({"articleUrl":"https://news.example/politics/city-budget-vote","publisherDomain":"news.example"})";
  WireResponse response = Send(request);
  EXPECT_EQ(response.status, 200) << response.error;
  EXPECT_EQ(obolo::testing::SandboxEnvironment::sandbox().requestsTo(kCreateLoggedOutBidPath).size(), 1u);
}

}  // namespace
}  // namespace obolo::sandbox::testing
