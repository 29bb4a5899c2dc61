#include <gtest/gtest.h>

#include <set>
#include <string>

#include "entry/global_variable.h"
#include "entry/jwt_decode.h"
#include "support/fixed_clock.h"
#include "support/log_capture.h"
#include "support/temporary_store.h"
#include "support/tokens.h"

namespace obolo {
namespace {

using testing::Base64Url;
using testing::LogCapture;
using testing::MakeToken;
using testing::TokenExpiringAt;

constexpr std::int64_t kNow = 1'800'000'000;  // 2027-01-15 08:00:00 UTC

class TokenValidityTest : public ::testing::Test {
 protected:
  testing::TemporaryStore store_;
  testing::ScopedFixedClock clock_{kNow};
  GlobalVariable& global_ = GlobalVariable::shared();
};

TEST_F(TokenValidityTest, AccessTokenNeedsOneWholeMinuteLeft) {
  struct Case {
    std::string token;
    bool valid;
    const char* why;
  } cases[] = {
      {TokenExpiringAt(kNow + 59), false, "59 s left is 0 whole minutes"},
      {TokenExpiringAt(kNow + 60), true, "60 s left is 1 minute"},
      {TokenExpiringAt(kNow + 61), true, "61 s"},
      {TokenExpiringAt(kNow + 30), false, "30 s"},
      {TokenExpiringAt(kNow), false, "expires now"},
      {TokenExpiringAt(kNow - 600), false, "expired 10 minutes ago"},
      {TokenExpiringAt(kNow * 1000), true, "milliseconds read as seconds lie far ahead"},
      {MakeToken(R"({"sub":"42"})"), false, "no exp"},
      {MakeToken(R"({"exp":"2000000000"})"), false, "exp as text fails the payload"},
      {MakeToken(R"({"exp":1800003600.5})"), false, "exp with a fraction fails the payload"},
      {"header.%%%%.signature", false, "undecodable payload"},
      {"no-dots-at-all", false, "no payload segment"},
  };
  for (const auto& c : cases) {
    global_.setAccessToken(c.token);
    EXPECT_EQ(global_.isOBTokenValid(), c.valid) << c.why;
  }
}

TEST_F(TokenValidityTest, WritesExpiryNowAndMinutes) {
  global_.setAccessToken(TokenExpiringAt(kNow - 600));
  LogCapture log;
  EXPECT_FALSE(global_.isOBTokenValid());
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"2027-01-15 07:50:00 +0000", "2027-01-15 08:00:00 +0000", "-10"}));
}

TEST_F(TokenValidityTest, TokenWithoutExpiryIsJudgedAsExpiringIn1970) {
  global_.setAccessToken(MakeToken(R"({"sub":"42"})"));
  LogCapture log;
  EXPECT_FALSE(global_.isOBTokenValid());
  ASSERT_FALSE(log.lines().empty());
  EXPECT_EQ(log.lines()[0], "1970-01-01 00:00:00 +0000");
}

TEST_F(TokenValidityTest, RefreshTokenFollowsTheSameRuleAndIsSilentWhenAbsent) {
  {
    LogCapture log;
    EXPECT_FALSE(global_.isRefreshTokenValid());
    EXPECT_TRUE(log.lines().empty());
  }
  global_.setRefreshToken(TokenExpiringAt(kNow + 3600));
  EXPECT_TRUE(global_.isRefreshTokenValid());
  global_.setRefreshToken(TokenExpiringAt(kNow + 59));
  EXPECT_FALSE(global_.isRefreshTokenValid());
}

TEST(JWTDecodeTest, ReadsOnlyThePayloadSegment) {
  const std::string payload = Base64Url(R"({"exp":1700000000,"sub":"42","username":"reader"})");
  const TokenData data = JWTDecode::shared().decode("garbage!." + payload + ".%%not-base64%%");
  EXPECT_EQ(data.exp, 1700000000);
  EXPECT_EQ(data.sub, "42");
  EXPECT_EQ(data.username, "reader");
  // Two segments are enough; more than three are ignored beyond the second.
  EXPECT_EQ(JWTDecode::shared().decode("h." + payload).exp, 1700000000);
  EXPECT_EQ(JWTDecode::shared().decode("h." + payload + ".s.extra").exp, 1700000000);
  EXPECT_EQ(JWTDecode::shared().decode(payload), TokenData{});
}

TEST(JWTDecodeTest, PadsSegmentsByTheirLength) {
  // Payloads one byte apart give unpadded segments whose lengths leave
  // remainders 0, 2 and 3 after division by 4; each gets the padding it needs.
  std::set<size_t> remainders;
  for (const std::string filler : {"", "x", "xy"}) {
    const std::string segment = Base64Url(R"({"exp":1700000000,"s":")" + filler + R"("})");
    remainders.insert(segment.size() % 4);
    EXPECT_EQ(JWTDecode::shared().decodeJWTPart(segment).exp, 1700000000) << segment;
  }
  EXPECT_EQ(remainders, (std::set<size_t>{0, 2, 3}));

  // A segment one character longer than whole groups gets "===" and fails.
  const std::string whole = Base64Url(R"({"exp":1700000000,"a":1})");
  ASSERT_EQ(whole.size() % 4, 0u);
  EXPECT_EQ(JWTDecode::shared().decodeJWTPart(whole + "A"), TokenData{});
}

TEST(JWTDecodeTest, UrlAlphabetMapsToStandardBase64) {
  // A payload whose encoding holds both '-' and '_' (standard '+' and '/').
  const std::string json = R"({"sub":"?>?>~~~","exp":1})";
  const std::string segment = Base64Url(json);
  ASSERT_NE(segment.find_first_of("-_"), std::string::npos);
  EXPECT_EQ(JWTDecode::shared().decodeJWTPart(segment).sub, "?>?>~~~");
}

TEST(JWTDecodeTest, WrongClaimTypesGiveTheEmptyRecord) {
  for (const char* json : {R"({"exp":"1"})", R"({"sub":42})", R"({"iat":1.5})", R"([1,2])", "not json"}) {
    EXPECT_EQ(JWTDecode::shared().decodeJWTPart(Base64Url(json)), TokenData{}) << json;
  }
}

TEST(DateTest, SecondsAreSecondsAndRenderInUtc) {
  EXPECT_EQ(dateFromMilliseconds(1700000000).description(), "2023-11-14 22:13:20 +0000");
  EXPECT_EQ(dateFromMilliseconds(0).description(), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(dateFromMilliseconds(-1).description(), "1969-12-31 23:59:59 +0000");
  // Far outside the calendar, still a readable line and no crash.
  EXPECT_EQ(dateFromMilliseconds(INT64_MAX).description(), "9.223372036854776e+18 seconds since 1970");
}

}  // namespace
}  // namespace obolo
