// The JSON calls behind the login page, and its logo. The page itself is
// driven in a browser by tests/browser.

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "sandbox/publisher_logo.h"
#include "sandbox_fixture.h"
#include "support/pixels.h"
#include "toolkit/image_decoder.h"

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

TEST_F(LoginTest, TheLogoComesInEveryFormatTheKitDecodesAndShowsTheSameDrawing) {
  struct Case {
    const char* path;
    const char* type;
    int tolerance;  // JPEG is lossy
  } cases[] = {
      {kPublisherLogoPath, "image/png", 0},
      {kPublisherLogoJpegPath, "image/jpeg", 12},
      {kPublisherLogoWebpPath, "image/webp", 0},
      {kPublisherLogoGifPath, "image/gif", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    WireResponse logo = client_.get(c.path);
    EXPECT_EQ(logo.status, 200);
    EXPECT_EQ(logo.contentType, c.type);
    const auto image = DecodeImage(logo.body);
    ASSERT_TRUE(image.has_value());
    ASSERT_EQ(image->width, 64u);
    ASSERT_EQ(image->height, 64u);
    // White in the corners, the amber disc at the centre and the dark ring
    // of the "O" around it.
    for (auto [x, y, colour] : {std::tuple{0, 0, kLogoBackground},
                                {63, 63, kLogoBackground},
                                {32, 32, kLogoDisc},
                                {32, 6, kLogoDisc},
                                {32, 16, kLogoInk},
                                {48, 32, kLogoInk}}) {
      EXPECT_LE(obolo::testing::ChannelDistance(obolo::testing::PixelAt(*image, x, y),
                                                obolo::testing::Opaque(colour)),
                c.tolerance)
          << "at (" << x << ", " << y << ")";
    }
  }
}

}  // namespace
}  // namespace obolo::sandbox::testing
