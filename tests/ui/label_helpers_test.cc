#include "ui/label_helpers.h"

#include <gtest/gtest.h>

#include <string>

#include "support/log_capture.h"

namespace obolo {
namespace {

TEST(ReplaceTextTest, OnlyTheExactFundsMessageIgnoringCaseGainsTheHint) {
  const std::string hint = " Please check your mail.";
  struct Case {
    const char* text;
    bool gains_hint;
  } cases[] = {
      {" you don\u2019t have sufficient funds.", true},
      {" You don\u2019t have sufficient funds.", true},
      {" YOU DON\u2019T HAVE SUFFICIENT FUNDS.", true},
      {"you don\u2019t have sufficient funds.", false},        // no leading space
      {" you don't have sufficient funds.", false},            // straight apostrophe
      {" you don\u2019t have sufficient funds", false},        // no full stop
      {" you don\u2019t have sufficient funds. ", false},      // trailing space
      {" YOU DON\u2019T HAVE SUFF\u0130CIENT FUNDS.", false},  // "İ" lower-cases to "i" and a dot
      {" you don\u2019t have sufficient funds.\xFF", false},
      {"Unlock this article for 0.50 EUR", false},
      {"", false},
  };
  for (const auto& c : cases) {
    testing::LogCapture log;
    UILabel label;
    replace(label, c.text);
    EXPECT_EQ(label.text(), c.gains_hint ? c.text + hint : std::string(c.text)) << c.text;
    EXPECT_EQ(log.lines(), std::vector<std::string>{c.text});
  }
}

}  // namespace
}  // namespace obolo
