// The wallet site's side of a login: the JSON calls behind the login page,
// the pages themselves and the logo.

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <optional>
#include <string>

#include "sandbox/png_image.h"
#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

using LoginTest = SandboxTest;

struct DecodedPng {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::string rgb;  // rows of width * 3 bytes, filter bytes removed
};

std::uint32_t ReadU32(const std::string& bytes, std::size_t at) {
  return (std::uint32_t(std::uint8_t(bytes[at])) << 24) | (std::uint32_t(std::uint8_t(bytes[at + 1])) << 16) |
         (std::uint32_t(std::uint8_t(bytes[at + 2])) << 8) | std::uint32_t(std::uint8_t(bytes[at + 3]));
}

// Decodes an 8-bit RGB PNG whose rows all use filter 0, checking every chunk's
// CRC with zlib; fails the test and returns none on anything else.
std::optional<DecodedPng> DecodePng(const std::string& png) {
  if (png.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) {
    ADD_FAILURE() << "no PNG signature";
    return std::nullopt;
  }
  DecodedPng image;
  std::string compressed;
  bool ended = false;
  for (std::size_t at = 8; at + 12 <= png.size() && !ended;) {
    const std::uint32_t length = ReadU32(png, at);
    const std::string type = png.substr(at + 4, 4);
    if (at + 12 + length > png.size()) {
      ADD_FAILURE() << "chunk " << type << " runs past the end";
      return std::nullopt;
    }
    const auto* typed = reinterpret_cast<const Bytef*>(png.data() + at + 4);
    if (crc32(0, typed, 4 + length) != ReadU32(png, at + 8 + length)) {
      ADD_FAILURE() << "bad CRC in chunk " << type;
      return std::nullopt;
    }
    const std::string data = png.substr(at + 8, length);
    if (type == "IHDR") {
      image.width = ReadU32(data, 0);
      image.height = ReadU32(data, 4);
      EXPECT_EQ(data.substr(8), std::string("\x08\x02\x00\x00\x00", 5)) << "8-bit RGB, no interlace";
    } else if (type == "IDAT") {
      compressed += data;
    } else if (type == "IEND") {
      ended = true;
    }
    at += 12 + length;
  }
  EXPECT_TRUE(ended) << "no IEND chunk";
  const std::size_t stride = 1 + 3 * std::size_t(image.width);
  std::string raw(stride * image.height, '\0');
  uLongf raw_length = raw.size();
  if (uncompress(reinterpret_cast<Bytef*>(raw.data()), &raw_length,
                 reinterpret_cast<const Bytef*>(compressed.data()), compressed.size()) != Z_OK ||
      raw_length != raw.size()) {
    ADD_FAILURE() << "IDAT does not inflate to " << raw.size() << " bytes";
    return std::nullopt;
  }
  for (std::uint32_t y = 0; y < image.height; ++y) {
    EXPECT_EQ(raw[y * stride], '\0') << "row " << y;
    image.rgb += raw.substr(y * stride + 1, stride - 1);
  }
  return image;
}

TEST_F(LoginTest, CodeThenVerifyYieldsKeysThatCompleteACustomerBid) {
  WireResponse code = client_.call("POST", kLoginCodePath, json{{"email", seed::kReaderEmail}});
  ASSERT_EQ(code.status, 200) << code.body;
  ASSERT_TRUE(code.json()["code"].is_string());
  const std::string shown = code.json()["code"];
  EXPECT_EQ(shown.size(), 6u);
  EXPECT_EQ(shown.find_first_not_of("0123456789"), std::string::npos) << shown;
  EXPECT_EQ(sandbox_.lastOneTimeCode(seed::kReaderEmail), shown);

  WireResponse verified =
      client_.call("POST", kLoginVerifyPath, json{{"email", seed::kReaderEmail}, {"code", shown}});
  ASSERT_EQ(verified.status, 200) << verified.body;
  json keys = verified.json();
  ASSERT_TRUE(keys["deviceKey"].is_string());
  ASSERT_TRUE(keys["loginKey"].is_string());
  EXPECT_EQ(sandbox_.lastOneTimeCode(seed::kReaderEmail), std::nullopt);
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(keys["deviceKey"].get<std::string>()),
            true);  // until the customer bid

  const std::int64_t bid_id = loggedOutBid(seed::kNormalArticleUrl)["oboloBidId"];
  WireResponse login = client_.call(
      "POST", kCustomerBidPath,
      json{{"deviceKey", keys["deviceKey"]}, {"oboloBidId", bid_id}, {"loginToken", keys["loginKey"]}});
  ASSERT_EQ(login.status, 200) << login.body;
  EXPECT_EQ(login.json()["data"]["customerInfo"]["customer"]["email"], seed::kReaderEmail);
  EXPECT_EQ(sandbox_.isDeviceLoggedOut(keys["deviceKey"].get<std::string>()), false);
}

TEST_F(LoginTest, UnknownAddressesAndWrongOrSpentCodesAreRefused) {
  const std::string code =
      client_.call("POST", kLoginCodePath, json{{"email", seed::kReaderEmail}}).json()["code"];
  const std::string other =
      client_.call("POST", kLoginCodePath, json{{"email", seed::kCreditReaderEmail}}).json()["code"];
  const std::string wrong = code == "000000" ? "111111" : "000000";

  struct Case {
    const char* what;
    const char* path;
    std::string body;
    long status;
  };
  const Case cases[] = {
      {"code for an unknown e-mail", kLoginCodePath, json{{"email", "nobody@example.com"}}.dump(), 404},
      {"code for no e-mail", kLoginCodePath, "{}", 400},
      {"code request that is not JSON", kLoginCodePath, "email=reader@example.com", 400},
      {"a wrong code", kLoginVerifyPath, json{{"email", seed::kReaderEmail}, {"code", wrong}}.dump(), 401},
      {"another reader's code", kLoginVerifyPath, json{{"email", seed::kReaderEmail}, {"code", other}}.dump(),
       401},
      {"no code", kLoginVerifyPath, json{{"email", seed::kReaderEmail}}.dump(), 401},
      {"a code as a number", kLoginVerifyPath, R"({"email":"reader@example.com","code":123456})", 400},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WireResponse response = client_.call("POST", c.path, c.body);
    EXPECT_EQ(response.status, c.status);
    EXPECT_EQ(response.json()["success"], false);
    EXPECT_TRUE(response.json()["message"].is_string());
    EXPECT_FALSE(response.json().contains("loginKey"));
  }

  // Refusals leave the right code usable, and it works once.
  const json right = {{"email", seed::kReaderEmail}, {"code", code}};
  EXPECT_EQ(client_.call("POST", kLoginVerifyPath, right).status, 200);
  EXPECT_EQ(client_.call("POST", kLoginVerifyPath, right).status, 401);
}

TEST_F(LoginTest, ANewCodeReplacesTheOldOne) {
  const std::string first =
      client_.call("POST", kLoginCodePath, json{{"email", seed::kReaderEmail}}).json()["code"];
  std::string second = first;
  for (int i = 0; i < 5 && second == first; ++i) {  // a repeat of the same six digits is possible
    second = client_.call("POST", kLoginCodePath, json{{"email", seed::kReaderEmail}}).json()["code"];
  }
  ASSERT_NE(first, second);
  EXPECT_EQ(
      client_.call("POST", kLoginVerifyPath, json{{"email", seed::kReaderEmail}, {"code", first}}).status,
      401);
  EXPECT_EQ(
      client_.call("POST", kLoginVerifyPath, json{{"email", "Reader@Example.com"}, {"code", second}}).status,
      200);
}

TEST_F(LoginTest, PagesAreSelfContainedHtml) {
  WireRequest request;
  request.method = "GET";
  request.url = sandbox_.loginPageUrl(seed::kPublisherId, 1001);
  request.caFile = sandbox_.caFile();
  WireResponse page = Send(request);
  ASSERT_EQ(page.status, 200);
  EXPECT_EQ(page.contentType.rfind("text/html", 0), 0u) << page.contentType;
  EXPECT_NE(page.body.find("messageHandlers.obHandler"), std::string::npos);
  EXPECT_NE(page.body.find("device_key"), std::string::npos);
  EXPECT_NE(page.body.find("login_key"), std::string::npos);
  EXPECT_NE(page.body.find(kLoginCodePath), std::string::npos);
  EXPECT_NE(page.body.find(kLoginVerifyPath), std::string::npos);
  // Nothing is loaded from elsewhere.
  for (const char* attribute : {"src=", "href="}) {
    for (std::size_t at = page.body.find(attribute); at != std::string::npos;
         at = page.body.find(attribute, at + 1)) {
      std::string value = page.body.substr(at + std::strlen(attribute), 10);
      if (!value.empty() && (value[0] == '"' || value[0] == '\'')) value.erase(0, 1);
      EXPECT_NE(value.rfind("http", 0), 0u) << "external resource: " << value;
      EXPECT_NE(value.rfind("//", 0), 0u) << "external resource: " << value;
    }
  }

  WireResponse redirect = client_.get(kWindowModePath);
  EXPECT_EQ(redirect.status, 200);
  EXPECT_EQ(redirect.contentType.rfind("text/html", 0), 0u);
}

TEST_F(LoginTest, TheLogoIsAValidPngPicture) {
  WireResponse logo = client_.get(kPublisherLogoPath);
  ASSERT_EQ(logo.status, 200);
  EXPECT_EQ(logo.contentType, "image/png");
  auto image = DecodePng(logo.body);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width, 64u);
  EXPECT_EQ(image->height, 64u);
  ASSERT_EQ(image->rgb.size(), 64u * 64u * 3u);
  // A picture, not a blank: the centre differs from the corner.
  EXPECT_NE(image->rgb.substr(0, 3), image->rgb.substr((32 * 64 + 32) * 3, 3));
}

TEST(PngEncoderTest, PixelsSurviveARoundTripThroughZlib) {
  const std::vector<Rgb> pixels = {{255, 0, 0}, {0, 255, 0},     {0, 0, 255},
                                   {1, 2, 3},   {250, 251, 252}, {0, 0, 0}};
  auto image = DecodePng(EncodePng(3, 2, pixels));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width, 3u);
  EXPECT_EQ(image->height, 2u);
  std::string expected;
  for (const Rgb& p : pixels) expected += {char(p.r), char(p.g), char(p.b)};
  EXPECT_EQ(image->rgb, expected);

  // Larger than one stored deflate block (65535 bytes).
  std::vector<Rgb> big(200 * 150);
  for (std::size_t i = 0; i < big.size(); ++i)
    big[i] = {std::uint8_t(i), std::uint8_t(i >> 8), std::uint8_t(i * 7)};
  auto large = DecodePng(EncodePng(200, 150, big));
  ASSERT_TRUE(large);
  EXPECT_EQ(large->rgb.size(), big.size() * 3);
  EXPECT_EQ(large->rgb.substr(large->rgb.size() - 3),
            std::string({char(big.back().r), char(big.back().g), char(big.back().b)}));
}

}  // namespace
}  // namespace obolo::sandbox::testing
