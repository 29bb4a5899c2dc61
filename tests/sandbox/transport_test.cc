// HTTPS through the certificate each sandbox makes for itself, with two
// instances running side by side.

#include <gtest/gtest.h>

#include <filesystem>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

WireResponse GetLogo(const std::string& base_url, const std::string& ca_file) {
  return Send({.method = "GET", .url = base_url + kPublisherLogoPath, .caFile = ca_file});
}

TEST(TransportTest, EachInstanceIsTrustedThroughItsOwnCaFileAndKeepsItsOwnState) {
  Sandbox first;
  Sandbox second;
  ASSERT_TRUE(first.start()) << first.error();
  ASSERT_TRUE(second.start()) << second.error();
  EXPECT_NE(first.port(), second.port());
  EXPECT_EQ(first.baseUrl(), "https://127.0.0.1:" + std::to_string(first.port()));

  EXPECT_EQ(GetLogo(first.baseUrl(), first.caFile()).status, 200);
  EXPECT_EQ(GetLogo("https://localhost:" + std::to_string(first.port()), first.caFile()).status, 200);
  EXPECT_EQ(GetLogo(first.baseUrl(), "").code, CURLE_PEER_FAILED_VERIFICATION) << "not the system's store";
  EXPECT_EQ(GetLogo(first.baseUrl(), second.caFile()).code, CURLE_PEER_FAILED_VERIFICATION);

  second.setFault(kCreateLoggedOutBidPath, Fault::Always(FaultKind::kServerError));
  EXPECT_EQ(SandboxClient(first).call("POST", kCreateLoggedOutBidPath, BidBody(seed::kNormalArticleUrl)).status,
            200);
  EXPECT_EQ(first.requests().size(), 3u);
  EXPECT_TRUE(second.requests().empty());

  const std::filesystem::path ca_file = first.caFile();
  first.stop();
  EXPECT_FALSE(std::filesystem::exists(ca_file.parent_path())) << "the certificate goes with the sandbox";
}

TEST(TransportTest, ATakenPortMakesStartFailNamingIt) {
  Sandbox holder;
  ASSERT_TRUE(holder.start()) << holder.error();
  Sandbox late(SandboxOptions{.port = holder.port()});
  EXPECT_FALSE(late.start());
  EXPECT_NE(late.error().find(std::to_string(holder.port())), std::string::npos) << late.error();
  EXPECT_EQ(GetLogo(holder.baseUrl(), holder.caFile()).status, 200);
}

}  // namespace
}  // namespace obolo::sandbox::testing
