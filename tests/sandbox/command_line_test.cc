#include "sandbox/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sandbox/price_format.h"

namespace obolo::sandbox {
namespace {

TEST(CommandLineTest, ReadsEveryOptionInBothSpellings) {
  CommandLine parsed = ParseCommandLine(
      {"--port", "8443", "--http", "--access-token-lifetime=30", "--refresh-token-lifetime", "-5"});
  ASSERT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.options.port, 8443);
  EXPECT_FALSE(parsed.options.https);
  EXPECT_EQ(parsed.options.accessTokenLifetime, std::chrono::seconds(30));
  EXPECT_EQ(parsed.options.refreshTokenLifetime, std::chrono::seconds(-5));
  EXPECT_FALSE(parsed.help);

  CommandLine defaults = ParseCommandLine({});
  EXPECT_EQ(defaults.error, "");
  EXPECT_TRUE(defaults.options.https);
  EXPECT_EQ(defaults.options.port, 0);
  EXPECT_TRUE(ParseCommandLine({"--help"}).help);
}

TEST(CommandLineTest, BadArgumentsAreNamedInTheError) {
  struct Case {
    std::vector<std::string> arguments;
    const char* named;
  };
  const Case cases[] = {
      {{"--port"}, "--port"},
      {{"--port", "http"}, "--port"},
      {{"--port", "65536"}, "--port"},
      {{"--port", "-1"}, "--port"},
      {{"--port=12x"}, "--port"},
      {{"--access-token-lifetime"}, "--access-token-lifetime"},
      {{"--refresh-token-lifetime", "1h"}, "--refresh-token-lifetime"},
      {{"--verbose"}, "--verbose"},
      {{"8443"}, "8443"},
  };
  for (const Case& c : cases) {
    CommandLine parsed = ParseCommandLine(c.arguments);
    EXPECT_NE(parsed.error.find(c.named), std::string::npos) << c.arguments[0] << ": " << parsed.error;
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
