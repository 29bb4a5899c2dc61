// How strictly the service's answers decode, and how records encode. What a
// decoding failure does to a call is the reliability suite's fault matrix.

#include "network/response_records.h"

#include <gtest/gtest.h>

namespace obolo {
namespace {

std::string Sentence(const std::string& why) { return "The data couldn't be read because " + why; }

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
  };
  for (const auto& c : cases) EXPECT_EQ(OboloData::decode(c.json).error(), Sentence(c.why)) << c.json;

  EXPECT_EQ(BalanceAndArticleData::decode(R"({"data":{"recommendations":[{"articleId":1},{"articleId":"x"}]}})")
                .error(),
            Sentence(R"("data.recommendations[1].articleId" should be an integer but is a string.)"));
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
