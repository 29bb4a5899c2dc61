#include "ui/hex_color.h"

#include <gtest/gtest.h>

namespace obolo {
namespace {

constexpr ColorComponents kGrey{0.5, 0.5, 0.5, 1.0};
constexpr ColorComponents kBlack{0, 0, 0, 1.0};

ColorComponents Rgb(int r, int g, int b) { return {r / 255.0, g / 255.0, b / 255.0, 1.0}; }

TEST(HexColorTest, ParsesLikeThePlatformOnTrickyInputs) {
  struct Case {
    const char* text;
    ColorComponents expected;
  } cases[] = {
      // Trimming, case and the one optional "#".
      {"  #ff8800\n", Rgb(255, 136, 0)},
      {"FF8800", Rgb(255, 136, 0)},
      {"\u00A0#00ff00\u3000", Rgb(0, 255, 0)},  // no-break space, ideographic space
      {"##FF880", kBlack},                      // six left, but the scanner meets "#"
      // Only exactly six characters count.
      {"#FFF", kGrey},
      {"#FF880080", kGrey},
      {"", kGrey},
      {"#", kGrey},
      {" \t\r\n ", kGrey},
      // The scanner: longest hexadecimal prefix, optional 0X, white space skipped.
      {"12ZZZZ", Rgb(0, 0, 18)},
      {"#ff88zz", Rgb(0, 255, 136)},
      {"0X12AB", Rgb(0, 0x12, 0xAB)},
      {"0x12ab", Rgb(0, 0x12, 0xAB)},
      {"0XZZZZ", kBlack},
      {"# FF880", Rgb(0x0F, 0xF8, 0x80)},
      {"#\r\nFF880", Rgb(0x0F, 0xF8, 0x80)},  // CR LF is one character
      // User-perceived characters, after full upper-casing.
      {"FF8800\u0301", Rgb(255, 136, 0)},     // a combining accent joins the last digit
      {"FF880\u0301", kGrey},                 // ...so this is five characters
      {"\uFB008800", Rgb(255, 136, 0)},       // the ligature "ff" upper-cases to "FF"
      {"\u00DFABCD", kBlack},                 // "ß" upper-cases to "SS": six, and no digit
      {"\U0001F1E9\U0001F1EAABCDE", kBlack},  // a flag is one character
      // Marks and emoji of recent Unicode versions, as the reader's platform
      // counts them.
      {"FF8800\u0898", Rgb(255, 136, 0)},       // an Arabic mark of Unicode 14 joins the last digit
      {"FF8800\U0001E4EC", Rgb(255, 136, 0)},   // a Nag Mundari mark of Unicode 15 too
      {"\U0001F426\u200D\u2B1BABCDE", kBlack},  // the black bird of Emoji 15 is one character
      {"\U0001FAF1\U0001F3FB\u200D\U0001FAF2\U0001F3FF12345", kBlack},  // handshake, two skin tones
      {"\U0001F600\u200D\u219CABCD", kBlack},  // an arrow after a joiner stands alone: six
      // Ill-formed UTF-8 is repaired to one U+FFFD per bad sequence.
      {"\37712345", kBlack},  // the byte 0xFF, then five digits
      {"12345\xC3", Rgb(0x01, 0x23, 0x45)},
  };
  for (const auto& c : cases) {
    const ColorComponents got = HexColorComponents(c.text);
    EXPECT_DOUBLE_EQ(got.red, c.expected.red) << '"' << c.text << '"';
    EXPECT_DOUBLE_EQ(got.green, c.expected.green) << '"' << c.text << '"';
    EXPECT_DOUBLE_EQ(got.blue, c.expected.blue) << '"' << c.text << '"';
    EXPECT_DOUBLE_EQ(got.alpha, 1.0) << '"' << c.text << '"';
  }
  EXPECT_EQ(hexStringToUIColor("#2880EB"), UIColor(40 / 255.0, 128 / 255.0, 235 / 255.0, 1.0));
}

}  // namespace
}  // namespace obolo
