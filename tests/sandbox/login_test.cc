// The JSON calls behind the login page, and its logo. The page itself is
// driven in a browser by tests/browser.

#include <gtest/gtest.h>

#include <string>

#include "sandbox_fixture.h"
#include "toolkit/image_data.h"

namespace obolo::sandbox::testing {
namespace {

using LoginTest = SandboxTest;

TEST_F(LoginTest, AShownCodeBuysKeysOnceAndTheKeysLogTheCustomerIn) {
  EXPECT_EQ(client_.call("POST", kLoginCodePath, json{{"email", "nobody@example.com"}}).status, 404);
  WireResponse code = client_.call("POST", kLoginCodePath, json{{"email", seed::kReaderEmail}});
  ASSERT_EQ(code.status, 200) << code.body;
  const std::string shown = code.json().value("code", "");
  EXPECT_EQ(shown.size(), 6u);
  EXPECT_EQ(shown.find_first_not_of("0123456789"), std::string::npos) << shown;

  const json wrong = {{"email", seed::kReaderEmail}, {"code", shown == "000000" ? "111111" : "000000"}};
  WireResponse refused = client_.call("POST", kLoginVerifyPath, wrong);
  EXPECT_EQ(refused.status, 401);
  EXPECT_FALSE(refused.json().contains("loginKey"));

  const json right = {{"email", seed::kReaderEmail}, {"code", shown}};
  WireResponse verified = client_.call("POST", kLoginVerifyPath, right);
  ASSERT_EQ(verified.status, 200) << verified.body;
  EXPECT_EQ(client_.call("POST", kLoginVerifyPath, right).status, 401) << "a code works once";

  const json keys = verified.json();
  const std::int64_t bid_id = bid().json()["data"]["oboloBidId"];
  WireResponse login = client_.call(
      "POST", kCustomerBidPath,
      json{{"deviceKey", keys["deviceKey"]}, {"oboloBidId", bid_id}, {"loginToken", keys["loginKey"]}});
  ASSERT_EQ(login.status, 200) << login.body;
  EXPECT_EQ(login.json()["data"]["customerInfo"]["customer"]["email"], seed::kReaderEmail);
}

TEST_F(LoginTest, TheLogoIsAWholePng) {
  WireResponse logo = client_.get(kPublisherLogoPath);
  EXPECT_EQ(logo.contentType, "image/png");
  auto image = InspectImageData(logo.body);  // checks every chunk and the pixel rows
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->format, ImageFormat::png);
  EXPECT_EQ(image->width, 64u);
}

}  // namespace
}  // namespace obolo::sandbox::testing
