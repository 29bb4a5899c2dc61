#include "network/response_records.h"

#include <gtest/gtest.h>

#include <string>

namespace obolo {
namespace {

TEST(ResponseRecordsTest, EmptyObjectDecodesToEmptyEnvelopesExceptLogout) {
  auto bid = OboloData::decode("{}");
  ASSERT_TRUE(bid.ok());
  EXPECT_FALSE(bid.value().success || bid.value().message || bid.value().data);
  auto token = NextTokenData::decode("{}");
  ASSERT_TRUE(token.ok());
  EXPECT_FALSE(token.value().data || token.value().statusCode);
  auto balance = BalanceAndArticleData::decode("{}");
  ASSERT_TRUE(balance.ok());
  EXPECT_FALSE(balance.value().data);
  auto logout = LogoutData::decode("{}");
  EXPECT_FALSE(logout.ok());
  EXPECT_EQ(logout.error(), R"(The data couldn't be read because "data" is missing.)");
}

TEST(ResponseRecordsTest, NullMeansAbsentAndUnknownKeysAreIgnored) {
  auto decoded = OboloData::decode(R"({"success":false,"message":"x","data":null,"extra":[1,{"a":2}]})");
  ASSERT_TRUE(decoded.ok());
  EXPECT_EQ(decoded.value().success, false);
  EXPECT_EQ(decoded.value().message, "x");
  EXPECT_FALSE(decoded.value().data.has_value());

  // "visits" belongs to Recommendation, not DataSet.
  auto misplaced = OboloData::decode(R"({"data":{"visits":1,"oboloBidId":null}})");
  ASSERT_TRUE(misplaced.ok());
  ASSERT_TRUE(misplaced.value().data.has_value());
  EXPECT_FALSE(misplaced.value().data->oboloBidId.has_value());
}

TEST(ResponseRecordsTest, AnyMemberOfTheWrongJsonTypeFailsTheWholeEnvelope) {
  struct Case {
    const char* json;
    const char* error;  // the sentence onFailure receives
  } cases[] = {
      {R"({"data":{"oboloBidId":"12"}})",
       R"(The data couldn't be read because "data.oboloBidId" should be an integer but is a string.)"},
      {R"({"data":{"articleId":5.5}})",
       R"(The data couldn't be read because "data.articleId" should be an integer but is a number with a fraction.)"},
      {R"({"data":{"unlocked":1}})",
       R"(The data couldn't be read because "data.unlocked" should be a boolean but is an integer.)"},
      {R"({"data":{"customerBalance":"5"}})",
       R"(The data couldn't be read because "data.customerBalance" should be a number but is a string.)"},
      {R"({"success":"true"})",
       R"(The data couldn't be read because "success" should be a boolean but is a string.)"},
      {R"({"message":false})",
       R"(The data couldn't be read because "message" should be a string but is a boolean.)"},
      {R"({"data":[]})", R"(The data couldn't be read because "data" should be an object but is an array.)"},
      {R"({"data":{"paywallSettings":{"showMobileImage":"yes"}}})",
       R"(The data couldn't be read because "data.paywallSettings.showMobileImage" should be a boolean but is a string.)"},
      {R"({"data":{"customerInfo":{"customer":{"id":1e30}}}})",
       R"(The data couldn't be read because "data.customerInfo.customer.id" is a number that does not fit a 64-bit integer.)"},
      {R"({"data":{"oboloBidId":9223372036854775808}})",
       R"(The data couldn't be read because "data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
      {R"({"data":{"oboloBidId":-9223372036854775809}})",
       R"(The data couldn't be read because "data.oboloBidId" is a number that does not fit a 64-bit integer.)"},
  };
  for (const auto& c : cases) {
    auto decoded = OboloData::decode(c.json);
    EXPECT_FALSE(decoded.ok()) << c.json;
    EXPECT_EQ(decoded.error(), c.error) << c.json;
  }
}

TEST(ResponseRecordsTest, NumbersDecodeByTheirValue) {
  auto decoded = OboloData::decode(
      R"({"data":{"oboloBidId":9223372036854775807,"publisherId":-9223372036854775808,)"
      R"("articleId":5.0,"customerBalance":5,"articlePriceInLocalCurrency":0.5}})");
  ASSERT_TRUE(decoded.ok()) << decoded.error();
  const DataSet& data = *decoded.value().data;
  EXPECT_EQ(data.oboloBidId, INT64_MAX);
  EXPECT_EQ(data.publisherId, INT64_MIN);
  EXPECT_EQ(data.articleId, 5);  // an integral 5.0 is accepted for an integer member
  EXPECT_EQ(data.customerBalance, 5.0);
  EXPECT_EQ(data.articlePriceInLocalCurrency, 0.5);
}

TEST(ResponseRecordsTest, LogoutNeedsItsDataAsABoolean) {
  auto ok = LogoutData::decode(R"({"success":true,"data":true})");
  ASSERT_TRUE(ok.ok());
  EXPECT_TRUE(ok.value().data);
  EXPECT_EQ(LogoutData::decode(R"({"success":true,"data":"true"})").error(),
            R"(The data couldn't be read because "data" should be a boolean but is a string.)");
  EXPECT_EQ(LogoutData::decode(R"({"success":true,"data":null})").error(),
            R"(The data couldn't be read because "data" is missing.)");
  EXPECT_FALSE(LogoutData::decode(R"({"success":true})").ok());
}

TEST(ResponseRecordsTest, RecommendationsFailAsAWhole) {
  auto empty = BalanceAndArticleData::decode(R"({"data":{"recommendations":[]}})");
  ASSERT_TRUE(empty.ok());
  ASSERT_TRUE(empty.value().data->recommendations.has_value());
  EXPECT_TRUE(empty.value().data->recommendations->empty());

  auto bad = BalanceAndArticleData::decode(
      R"({"data":{"recommendations":[{"articleId":1},{"articleId":"x"}]}})");
  EXPECT_EQ(bad.error(),
            R"(The data couldn't be read because "data.recommendations[1].articleId" should be an integer but is a string.)");
  EXPECT_FALSE(BalanceAndArticleData::decode(R"({"data":{"recommendations":[1]}})").ok());
}

TEST(ResponseRecordsTest, OnlyOneJsonObjectDecodes) {
  struct Case {
    const char* text;
    const char* error;
  } cases[] = {
      {"", "The data couldn't be read because the data is empty."},
      {"<html><body>502 Bad Gateway</body></html>", "The data couldn't be read because it isn't valid JSON."},
      {R"({"success":true)", "The data couldn't be read because it isn't valid JSON."},
      {"[]", "The data couldn't be read because the top level is an array, not an object."},
      {"true", "The data couldn't be read because the top level is a boolean, not an object."},
      {"null", "The data couldn't be read because the top level is null, not an object."},
  };
  for (const auto& c : cases) EXPECT_EQ(OboloData::decode(c.text).error(), c.error) << c.text;
}

TEST(ResponseRecordsTest, EncodingLeavesAbsentMembersOutAndRoundTrips) {
  DataSet data{};
  data.oboloBidId = 12;
  data.articlePriceInLocalCurrency = 5.0;
  data.paywallSettings = PaywallSettingsSet{"Title", std::nullopt, "Unlock"};
  OboloData envelope{true, std::nullopt, data};
  EXPECT_EQ(envelope.encode(),
            R"({"success":true,"data":{"oboloBidId":12,"articlePriceInLocalCurrency":5.0,)"
            R"("paywallSettings":{"obTitleText":"Title","obButtonText":"Unlock"}}})");
  auto back = OboloData::decode(envelope.encode());
  ASSERT_TRUE(back.ok());
  EXPECT_EQ(back.value().encode(), envelope.encode());

  EXPECT_EQ(LogoutData(std::nullopt, std::nullopt, false, 200).encode(), R"({"data":false,"statusCode":200})");
}

TEST(ResponseRecordsTest, DescriptionNamesEveryMember) {
  OboloData envelope{false, "Bid \"expired\"", DataSet{7}};
  const std::string text = envelope.description();
  EXPECT_TRUE(text.starts_with(R"(OboloData(success: false, message: "Bid \"expired\"", data: DataSet(oboloBidId: 7, publisherId: nil,)"))
      << text;
  EXPECT_TRUE(text.ends_with("paywallSettings: nil, customerInfo: nil))")) << text;
}

}  // namespace
}  // namespace obolo
