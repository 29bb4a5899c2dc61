// What a request body looks like on the wire: the exact bytes of the JSON
// object, texts escaped as JSON needs and nothing else.

#include "network/request_records.h"

#include <gtest/gtest.h>

namespace obolo {
namespace {

TEST(RequestRecordsTest, BodyTextsGoOutEscapedOnlyWhereJsonNeedsIt) {
  const struct {
    const char* name;
    std::string text;
    std::string json;  // the text as a JSON string
  } cases[] = {
      {"an address", "https://news.example/a/1?x=1&y=%20", R"("https://news.example/a/1?x=1&y=%20")"},
      {"quotes and backslashes", R"(say "hi" \ bye)", R"("say \"hi\" \\ bye")"},
      {"control characters", "a\nb\tc\x01", R"("a\nb\tc\u0001")"},
      {"DEL is printable to JSON", "a\x7f", "\"a\x7f\""},
      {"UTF-8 as it is", "caf\xC3\xA9 \xE2\x82\xAC", "\"caf\xC3\xA9 \xE2\x82\xAC\""},
      {"a byte that is not UTF-8 becomes U+FFFD", "a\xFFz", "\"a\xEF\xBF\xBDz\""},
  };
  for (const auto& c : cases) {
    BodyMap map;
    map.putText("text", c.text);
    EXPECT_EQ(map.json(), "{\"text\":" + c.json + "}") << c.name;
  }
}

TEST(RequestRecordsTest, BodyKeepsTheRecordsOrderAndLeavesDefaultsOut) {
  CreateLoggedBidParam bid;
  bid.accessKey = "key";
  bid.customerId = -3;
  bid.userAgent = "Mozilla/5.0 (iPhone)";
  EXPECT_EQ(bid.bodyMap().json(),
            R"({"accessKey":"key","customerId":-3,"isCustomerLoggedIn":false,"isSIMEnabled":false,)"
            R"x("userAgent":"Mozilla/5.0 (iPhone)"})x");
  EXPECT_EQ(CustomerBidParam{}.bodyMap().json(), "{}");
  AcceptBidParam accept;
  accept.oboloBidId = 9223372036854775807;
  accept.oboloTransactionMode = "normal";
  EXPECT_EQ(accept.bodyMap().json(), R"({"oboloBidId":9223372036854775807,"oboloTransactionMode":"normal"})");
}

}  // namespace
}  // namespace obolo
