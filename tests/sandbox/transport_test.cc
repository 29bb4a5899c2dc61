// How a sandbox serves: HTTPS with its own certificate, plain HTTP on request,
// several instances side by side, starting and stopping, many clients at once.

#include <gtest/gtest.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <filesystem>
#include <set>
#include <thread>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

WireResponse GetLogo(const std::string& base_url, const std::string& ca_file) {
  WireRequest request;
  request.method = "GET";
  request.url = base_url + kPublisherLogoPath;
  request.caFile = ca_file;
  return Send(request);
}

TEST(TransportTest, HttpsIsTrustedThroughTheGeneratedCaFileOnly) {
  Sandbox sandbox;
  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  EXPECT_GT(sandbox.port(), 0);
  EXPECT_EQ(sandbox.baseUrl(), "https://127.0.0.1:" + std::to_string(sandbox.port()));

  EXPECT_EQ(GetLogo(sandbox.baseUrl(), sandbox.caFile()).status, 200);
  // The certificate names localhost too.
  EXPECT_EQ(GetLogo("https://localhost:" + std::to_string(sandbox.port()), sandbox.caFile()).status, 200);
  // Without the CA file the certificate is not trusted.
  WireResponse untrusted = GetLogo(sandbox.baseUrl(), "");
  EXPECT_EQ(untrusted.code, CURLE_PEER_FAILED_VERIFICATION) << untrusted.error;

  // Another sandbox's certificate does not vouch for this one.
  Sandbox other;
  ASSERT_TRUE(other.start()) << other.error();
  EXPECT_NE(other.caFile(), sandbox.caFile());
  EXPECT_EQ(GetLogo(sandbox.baseUrl(), other.caFile()).code, CURLE_PEER_FAILED_VERIFICATION);
}

TEST(TransportTest, TheCaFileHoldsASelfSignedP256CertificateAndGoesAwayOnStop) {
  Sandbox sandbox;
  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  const std::string ca_file = sandbox.caFile();
  ASSERT_TRUE(std::filesystem::exists(ca_file));

  FILE* file = std::fopen(ca_file.c_str(), "r");
  ASSERT_NE(file, nullptr);
  X509* certificate = PEM_read_X509(file, nullptr, nullptr, nullptr);
  std::fclose(file);
  ASSERT_NE(certificate, nullptr);
  EVP_PKEY* key = X509_get0_pubkey(certificate);
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(EVP_PKEY_get_base_id(key), EVP_PKEY_EC);
  char group[64] = {};
  size_t length = 0;
  ASSERT_EQ(EVP_PKEY_get_utf8_string_param(key, "group", group, sizeof group, &length), 1);
  EXPECT_STREQ(group, "prime256v1");
  EXPECT_EQ(X509_check_ip_asc(certificate, "127.0.0.1", 0), 1);
  EXPECT_EQ(X509_check_host(certificate, "localhost", 0, 0, nullptr), 1);
  EXPECT_EQ(X509_verify(certificate, key), 1);  // signed by its own key
  X509_free(certificate);

  sandbox.stop();
  EXPECT_FALSE(std::filesystem::exists(ca_file));
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(ca_file).parent_path()));
  EXPECT_EQ(sandbox.caFile(), "");
  EXPECT_EQ(sandbox.baseUrl(), "");
  EXPECT_FALSE(sandbox.isRunning());
}

TEST(TransportTest, PlainHttpOnRequest) {
  SandboxOptions options;
  options.https = false;
  Sandbox sandbox(options);
  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  EXPECT_EQ(sandbox.baseUrl(), "http://127.0.0.1:" + std::to_string(sandbox.port()));
  EXPECT_EQ(sandbox.caFile(), "");
  SandboxClient client(sandbox);
  EXPECT_EQ(client.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl)).status, 200);
}

TEST(TransportTest, TwoInstancesRunSideBySideWithoutSharingState) {
  Sandbox first;
  Sandbox second;
  ASSERT_TRUE(first.start()) << first.error();
  ASSERT_TRUE(second.start()) << second.error();
  EXPECT_NE(first.port(), second.port());
  SandboxClient to_first(first);
  SandboxClient to_second(second);

  auto session = first.createSession(seed::kReaderEmail);
  ASSERT_TRUE(session);
  json bid = to_first
                 .call("POST", kCreateLoggedInBidPath,
                       LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), session->accessToken)
                 .json()["data"];
  second.setFault(kAcceptBidPath, Fault::Always(FaultKind::kServerError));
  WireResponse accepted =
      to_first.call("PUT", kAcceptBidPath, json{{"oboloBidId", bid["oboloBidId"]}}, session->accessToken);
  EXPECT_EQ(accepted.status, 200) << accepted.body;

  EXPECT_DOUBLE_EQ(*first.balance(seed::kReaderEmail), seed::kReaderBalance - seed::kNormalArticlePrice);
  EXPECT_DOUBLE_EQ(*second.balance(seed::kReaderEmail), seed::kReaderBalance);
  EXPECT_FALSE(second.bid(bid["oboloBidId"]).has_value());
  EXPECT_EQ(first.requests().size(), 2u);
  EXPECT_TRUE(second.requests().empty());
  // The first instance's token means nothing to the second.
  EXPECT_EQ(to_second
                .call("POST", kCreateLoggedInBidPath,
                      LoggedInBidBody(seed::kNormalArticleUrl, seed::kReaderId), session->accessToken)
                .status,
            401);
}

TEST(TransportTest, StartAndStopAreIdempotentAndTheWorldSurvivesARestart) {
  Sandbox sandbox;
  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  const int port = sandbox.port();
  EXPECT_TRUE(sandbox.start());
  EXPECT_EQ(sandbox.port(), port);

  auto session = sandbox.createSession(seed::kCreditReaderEmail);
  ASSERT_TRUE(session);
  sandbox.stop();
  sandbox.stop();
  EXPECT_FALSE(sandbox.isRunning());
  EXPECT_NE(GetLogo("https://127.0.0.1:" + std::to_string(port), "").code, CURLE_OK);

  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  SandboxClient client(sandbox);
  WireResponse balance = client.call("POST", kBalanceAndArticlePath,
                                     json{{"customerId", seed::kCreditReaderId}}, session->accessToken);
  EXPECT_EQ(balance.status, 200) << balance.body;
}

TEST(TransportTest, ATakenPortMakesStartFailWithAReason) {
  Sandbox holder;
  ASSERT_TRUE(holder.start()) << holder.error();
  SandboxOptions options;
  options.port = holder.port();
  Sandbox late(options);
  EXPECT_FALSE(late.start());
  EXPECT_NE(late.error().find(std::to_string(holder.port())), std::string::npos) << late.error();
  EXPECT_FALSE(late.isRunning());
  EXPECT_EQ(late.baseUrl(), "");
  EXPECT_EQ(GetLogo(holder.baseUrl(), holder.caFile()).status, 200);
}

TEST(TransportTest, ManyClientsAtOnceGetDistinctBids) {
  Sandbox sandbox;
  ASSERT_TRUE(sandbox.start()) << sandbox.error();
  constexpr int kThreads = 6;
  constexpr int kEach = 8;
  std::vector<std::vector<std::int64_t>> ids(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      SandboxClient client(sandbox);
      for (int i = 0; i < kEach; ++i) {
        json answer = client.call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl)).json();
        if (answer.is_object() && answer["data"]["oboloBidId"].is_number_integer()) {
          ids[t].push_back(answer["data"]["oboloBidId"]);
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  std::set<std::int64_t> distinct;
  for (const auto& list : ids) distinct.insert(list.begin(), list.end());
  EXPECT_EQ(distinct.size(), static_cast<std::size_t>(kThreads * kEach));
  EXPECT_EQ(sandbox.requestsTo(kCreateLoggedOutBidPath).size(), static_cast<std::size_t>(kThreads * kEach));
}

}  // namespace
}  // namespace obolo::sandbox::testing
