// How strictly the service's answers decode, and how records encode. What a
// decoding failure does to a call is the reliability suite's fault matrix.

#include "network/response_records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace obolo {
namespace {

std::string Sentence(const std::string& why) { return "The data couldn't be read because " + why; }
const std::string kInvalid = Sentence("it isn't valid JSON.");

TEST(ResponseRecordsTest, AnyMemberThatDoesNotFitFailsTheWholeEnvelope) {
  const struct {
    const char* json;
    const char* why;
  } cases[] = {
      {R"({"data":{"oboloBidId":"12"}})", R"("data.oboloBidId" should be an integer but is a string.)"},
      {R"({"data":{"articleId":5.5}})", R"("data.articleId" should be an integer but is a number with a fraction.)"},
      {R"({"data":{"unlocked":1}})", R"("data.unlocked" should be a boolean but is an integer.)"},
      {R"({"data":{"customerBalance":"5"}})", R"("data.customerBalance" should be a number but is a string.)"},
      {R"({"message":false})", R"("message" should be a string but is a boolean.)"},
      {R"({"data":[]})", R"("data" should be an object but is an array.)"},
      {R"({"data":{"oboloBidId":9223372036854775808}})",
       R"("data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
      {"[]", "the top level is an array, not an object."},
      {"null", "the top level is null, not an object."},
      {"5", "the top level is an integer, not an object."},
      {"-5.5e3", "the top level is a number, not an object."},
      {R"("x")", "the top level is a string, not an object."},
      {"true", "the top level is a boolean, not an object."},
      {"", "the data is empty."},
      // The JSON type is named as a JSON reader keeps the value: an integer
      // that fits 64 bits, signed or not, is an integer; any other number,
      // however it is written, is a number.
      {R"({"message":18446744073709551615})", R"("message" should be a string but is an integer.)"},
      {R"({"message":18446744073709551616})", R"("message" should be a string but is a number.)"},
      {R"({"message":-9223372036854775809})", R"("message" should be a string but is a number.)"},
      {R"({"message":1e2})", R"("message" should be a string but is a number.)"},
      {R"({"message":{}})", R"("message" should be a string but is an object.)"},
      {R"({"success":null,"success":"yes"})", R"("success" should be a boolean but is a string.)"},
      // Integers: judged by value, within signed 64 bits.
      {R"({"data":{"oboloBidId":-9223372036854775809}})",
       R"("data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
      {R"({"data":{"oboloBidId":1e19}})", R"("data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
      {R"({"data":{"oboloBidId":123456789012345678901234567890}})",
       R"("data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
      {R"({"data":{"oboloBidId":0.55e1}})", R"("data.oboloBidId" should be an integer but is a number with a fraction.)"},
      // Of several failing members the first declared counts, wherever it stands.
      {R"({"data":{"publisherId":"7","oboloBidId":"12"}})",
       R"("data.oboloBidId" should be an integer but is a string.)"},
      {R"({"data":{"paywallSettings":{"obTitleText":1}},"success":"true"})",
       R"("success" should be a boolean but is a string.)"},
  };
  for (const auto& c : cases) EXPECT_EQ(OboloData::decode(c.json).error(), Sentence(c.why)) << c.json;

  EXPECT_EQ(BalanceAndArticleData::decode(R"({"data":{"recommendations":[{"articleId":1},{"articleId":"x"}]}})")
                .error(),
            Sentence(R"("data.recommendations[1].articleId" should be an integer but is a string.)"));
}

TEST(ResponseRecordsTest, MalformedTextFailsWhereverItStands) {
  // Also inside a value no member reads, and after a member that failed.
  const char* const cases[] = {
      R"({"extra":[1,2,]})",
      R"({"extra":{"a" 1}})",
      R"({"extra":01})",
      R"({"extra":1.})",
      R"({"extra":-})",
      R"({"extra":nul})",
      R"({"extra":truee})",
      R"({"extra":1e400})",
      R"({"extra":"\x"})",
      R"({"extra":"\ud800"})",
      "{\"extra\":\"line\nbreak\"}",
      "{\"extra\":\"\xff\"}",
      R"({"data":{"oboloBidId":"12"},"extra":tru})",
      R"({"success":true} {})",
      R"({"success":true,})",
      R"({"success":true)",
      "[1,2",
      "5 6",
      " ",
      "\f{}",
  };
  for (const char* json : cases) {
    EXPECT_EQ(OboloData::decode(json).error(), kInvalid) << json;
    EXPECT_EQ(LogoutData::decode(json).error(), kInvalid) << json;
  }
}

TEST(ResponseRecordsTest, WellFormedTextDecodesHoweverItIsWritten) {
  const struct {
    const char* name;
    std::string json;
  } cases[] = {
      {"escaped key", R"({"\u0073uccess":true,"data":{"oboloBidId":12}})"},
      {"spaces everywhere", " \t\r\n{ \"success\" : true , \"data\" : { \"oboloBidId\" : 12 } } \n"},
      {"byte-order mark", "\xEF\xBB\xBF{\"success\":true,\"data\":{\"oboloBidId\":12}}"},
      {"a NUL byte ends the text", std::string("{\"success\":true,\"data\":{\"oboloBidId\":12}}\0tail", 46)},
      {"integral float", R"({"success":true,"data":{"oboloBidId":12.0}})"},
      {"exponent", R"({"success":true,"data":{"oboloBidId":1.2e1}})"},
      {"exponent with twenty digits", R"({"success":true,"data":{"oboloBidId":120e-00000000000000000001}})"},
      {"a key written twice counts with its last value",
       R"({"success":"no","success":true,"data":{"oboloBidId":"x"},"data":{"oboloBidId":12}})"},
      {"unknown values of any shape",
       R"({"x":[{"y":[[],{}]},-0.0,18446744073709551616,1e-400,1e000000000000000000001,"\ud83d\ude00\u0000"],)"
       R"("success":true,"data":{"oboloBidId":12,"visits":"many"}})"},
  };
  for (const auto& c : cases) {
    auto decoded = OboloData::decode(c.json);
    ASSERT_TRUE(decoded.ok()) << c.name << ": " << decoded.error();
    EXPECT_EQ(decoded.value().success, true) << c.name;
    ASSERT_TRUE(decoded.value().data.has_value()) << c.name;
    EXPECT_EQ(decoded.value().data->oboloBidId, 12) << c.name;
  }
  // "\u0000" in a string is a character like any other.
  EXPECT_EQ(OboloData::decode(R"({"message":"a\u0000b"})").value().message, std::string("a\0b", 3));
  EXPECT_EQ(OboloData::decode(R"({"data":{"customerBalance":-1e-400}})").value().data->customerBalance, 0.0);
  // The integer zero has no sign, a zero written with a fraction keeps it.
  EXPECT_FALSE(std::signbit(*OboloData::decode(R"({"data":{"customerBalance":-0}})").value().data->customerBalance));
  EXPECT_TRUE(std::signbit(*OboloData::decode(R"({"data":{"customerBalance":-0.0}})").value().data->customerBalance));
  EXPECT_EQ(OboloData::decode(R"({"data":{"customerBalance":18446744073709551616}})").value().data->customerBalance,
            18446744073709551616.0);
}

TEST(ResponseRecordsTest, IntegersKeepTheirWholeRange) {
  const struct {
    const char* json;
    std::int64_t id;
  } cases[] = {
      {R"({"data":{"oboloBidId":9223372036854775807}})", INT64_MAX},
      {R"({"data":{"oboloBidId":-9223372036854775808}})", INT64_MIN},
      {R"({"data":{"oboloBidId":-9.2233720368547748e18}})", -9223372036854774784},
      {R"({"data":{"oboloBidId":-0.0}})", 0},
      {R"({"data":{"oboloBidId":5E+0}})", 5},
  };
  for (const auto& c : cases) {
    auto decoded = OboloData::decode(c.json);
    ASSERT_TRUE(decoded.ok()) << c.json << ": " << decoded.error();
    EXPECT_EQ(decoded.value().data->oboloBidId, c.id) << c.json;
  }
}

TEST(ResponseRecordsTest, AnswersBeyondTheLimitsFailWithTheirOwnSentence) {
  std::string deep;
  for (int i = 0; i < kMaxJsonDepth - 1; ++i) deep += R"({"a":)";
  deep += "1";
  for (int i = 0; i < kMaxJsonDepth - 1; ++i) deep += "}";
  std::string recommendations = R"({"data":{"recommendations":[{})";
  for (std::size_t i = 1; i < kMaxJsonArrayRecords; ++i) recommendations += ",{}";
  recommendations += "]}}";
  const std::string padding(kMaxJsonBytes - std::string_view(R"({"message":""})").size(), 'x');

  // At each limit the answer still decodes.
  EXPECT_TRUE(OboloData::decode(R"({"extra":)" + deep + "}").ok()) << "nested to the limit";
  EXPECT_EQ(BalanceAndArticleData::decode(recommendations).value().data->recommendations->size(),
            kMaxJsonArrayRecords);
  const std::string longest = R"({"message":")" + padding + R"("})";
  ASSERT_EQ(longest.size(), kMaxJsonBytes);
  EXPECT_EQ(OboloData::decode(longest).value().message->size(), padding.size());

  // One step beyond, it fails, and so does anything longer or deeper.
  const std::string too_deep = Sentence("it is nested more than 64 levels deep.");
  EXPECT_EQ(OboloData::decode(R"({"extra":[)" + deep + "]}").error(), too_deep);
  EXPECT_EQ(OboloData::decode(std::string(1'000'000, '[')).error(), too_deep);
  EXPECT_EQ(LogoutData::decode("[" + std::string(100, '[') + std::string(101, ']')).error(), too_deep);
  recommendations.insert(recommendations.size() - 3, ",{}");
  EXPECT_EQ(BalanceAndArticleData::decode(recommendations).error(),
            Sentence(R"("data.recommendations" has more than 4096 elements.)"));
  EXPECT_EQ(OboloData::decode(R"({"message":"x)" + padding + R"("})").error(),
            Sentence("the data is larger than 1 MiB."));
  std::string owned = std::string(40'000'000, ' ') + "{}";
  EXPECT_EQ(DecodeRecordInPlace<OboloData>(owned).error(), Sentence("the data is larger than 1 MiB."));
}

TEST(ResponseRecordsTest, DecodingInPlaceLeavesTheTextAsItWas) {
  const std::string answers[] = {R"({"success":true,"data":{"oboloBidId":12}})", R"({"data":{"oboloBidId":"12"}})",
                                 "{", ""};
  for (const std::string& answer : answers) {
    std::string text = answer;
    const auto in_place = DecodeRecordInPlace<OboloData>(text);
    EXPECT_EQ(text, answer);
    const auto copied = OboloData::decode(answer);
    EXPECT_EQ(in_place.ok(), copied.ok()) << answer;
    EXPECT_EQ(in_place.error(), copied.error()) << answer;
    if (in_place.ok()) {
      EXPECT_EQ(in_place.value().encode(), copied.value().encode());
    }
  }
}

TEST(ResponseRecordsTest, NullIsAbsentAndUnknownKeysAreIgnored) {
  auto decoded = OboloData::decode(R"({"success":false,"data":null,"extra":[1,{"a":2}]})");
  ASSERT_TRUE(decoded.ok()) << decoded.error();
  EXPECT_EQ(decoded.value().success, false);
  EXPECT_FALSE(decoded.value().data.has_value());
}

TEST(ResponseRecordsTest, LogoutRequiresItsDataAsABoolean) {
  auto logout = LogoutData::decode(R"({"data":true})");
  ASSERT_TRUE(logout.ok());
  EXPECT_TRUE(logout.value().data);
  EXPECT_EQ(LogoutData::decode(R"({"success":true,"data":null})").error(), Sentence(R"("data" is missing.)"));
  EXPECT_EQ(LogoutData::decode(R"({"data":"true"})").error(),
            Sentence(R"("data" should be a boolean but is a string.)"));
  // The last time the key is written counts; a failing member before it in
  // declared order is reported first.
  EXPECT_EQ(LogoutData::decode(R"({"data":true,"data":null})").error(), Sentence(R"("data" is missing.)"));
  EXPECT_TRUE(LogoutData::decode(R"({"data":"x","data":false})").ok());
  EXPECT_EQ(LogoutData::decode(R"({"message":5})").error(),
            Sentence(R"("message" should be a string but is an integer.)"));
}

TEST(ResponseRecordsTest, EncodingLeavesAbsentMembersOut) {
  DataSet data{};
  data.oboloBidId = 12;
  data.paywallSettings = PaywallSettingsSet{"Title", std::nullopt, "Unlock"};
  EXPECT_EQ((OboloData{true, std::nullopt, data}).encode(),
            R"({"success":true,"data":{"oboloBidId":12,"paywallSettings":{"obTitleText":"Title","obButtonText":"Unlock"}}})");
}

}  // namespace
}  // namespace obolo
