#include "sandbox/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sandbox/price_format.h"

namespace obolo::sandbox {
namespace {

TEST(CommandLineTest, ReadsEveryOptionInBothSpellingsAndNamesABadOne) {
  CommandLine parsed = ParseCommandLine(
      {"--port", "8443", "--http", "--access-token-lifetime=30", "--refresh-token-lifetime", "-5"});
  ASSERT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.options.port, 8443);
  EXPECT_FALSE(parsed.options.https);
  EXPECT_EQ(parsed.options.accessTokenLifetime, std::chrono::seconds(30));
  EXPECT_EQ(parsed.options.refreshTokenLifetime, std::chrono::seconds(-5));

  const std::vector<std::string> bad[] = {
      {"--port"},        {"--port", "http"}, {"--port", "65536"},
      {"--port", "-1"},  {"--port=12x"},     {"--access-token-lifetime"},
      {"--refresh-token-lifetime", "1h"},    {"--verbose"},
      {"8443"},
  };
  for (const auto& arguments : bad) {
    const std::string named = arguments[0].substr(0, arguments[0].find('='));
    const std::string error = ParseCommandLine(arguments).error;
    EXPECT_NE(error.find(named), std::string::npos) << arguments[0] << ": " << error;
  }
}

TEST(PriceFormatTest, SymbolsAndTwoDecimals) {
  struct Case {
    double amount;
    const char* currency;
    const char* text;
  };
  const Case cases[] = {
      {0.5, "EUR", "\u20AC0.50"},       {25, "EUR", "\u20AC25.00"}, {1.25, "USD", "$1.25"},
      {0.1 + 0.2, "GBP", "\u00A30.30"}, {1, "CHF", "CHF 1.00"},     {-2, "EUR", "-\u20AC2.00"},
      {-0.001, "EUR", "\u20AC0.00"},
  };
  for (const Case& c : cases) EXPECT_EQ(FormatPrice(c.amount, c.currency), c.text) << c.amount;
}

}  // namespace
}  // namespace obolo::sandbox
