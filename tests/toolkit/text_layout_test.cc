// Measuring text: what the layout pass sizes labels by and the renderer
// draws by.

#include "toolkit/text_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace obolo {
namespace {

constexpr char kPrompt[] =
    "Unlock \u201CCity council approves the budget after a night of debate\u201D from The Example Times for "
    "0.50 EUR. No subscription: you pay for this article only.";

TextStyle Style(CGFloat size = 15, int lines = 0, NSTextAlignment alignment = NSTextAlignment::natural) {
  TextStyle style;
  style.font = UIFont::systemFont(size);
  style.numberOfLines = lines;
  style.alignment = alignment;
  return style;
}

TEST(TextLayoutTest, TheFontsLoadAndTextHasASize) {
  auto service = TextLayoutService::shared();
  EXPECT_EQ(service->error(), "");
  const TextLayout empty = service->layout("", Style(), 0);
  EXPECT_EQ(empty.size, (CGSize{0, 0}));
  EXPECT_TRUE(empty.lines.empty());
  const TextLayout word = service->layout("Unlock", Style(), 0);
  ASSERT_EQ(word.lines.size(), 1u);
  EXPECT_GT(word.size.width, 30);
  EXPECT_GT(word.size.height, 15) << "a line is taller than the font's size";
}

TEST(TextLayoutTest, TextWrapsWithinTheWidthAndANarrowerWidthNeedsMoreLines) {
  auto service = TextLayoutService::shared();
  std::size_t previousLines = 0;
  CGFloat previousHeight = 0;
  for (const CGFloat width : {600.0, 310.0, 200.0, 120.0}) {
    const TextLayout layout = service->layout(kPrompt, Style(), width);
    EXPECT_LE(layout.size.width, width) << width;
    EXPECT_GT(layout.lines.size(), previousLines) << width;
    EXPECT_GT(layout.size.height, previousHeight) << width;
    std::size_t next = 0;
    for (const TextLine& line : layout.lines) {
      EXPECT_EQ(line.start, next) << "lines follow each other without gaps: " << width;
      next = line.start + line.length;
      EXPECT_LE(line.width, width + 0.5);
    }
    EXPECT_EQ(next, std::string(kPrompt).size()) << "every byte is on a line";
    previousLines = layout.lines.size();
    previousHeight = layout.size.height;
  }
}

// Layouts are kept and handed out again: asking again, in between for the
// same text in other styles and widths, gives each its own answer.
TEST(TextLayoutTest, AskingAgainGivesTheSameAnswerForEachStyleAndWidth) {
  auto service = TextLayoutService::shared();
  const struct {
    TextStyle style;
    CGFloat width;
  } asks[] = {{Style(), 310},          {Style(), 120},          {Style(15, 2), 120},
              {Style(22), 310},        {Style(15, 0, NSTextAlignment::center), 310}};
  std::vector<TextLayout> first;
  for (const auto& ask : asks) first.push_back(service->layout(kPrompt, ask.style, ask.width));
  EXPECT_GT(first[1].lines.size(), first[0].lines.size()) << "narrower wraps more";
  EXPECT_EQ(first[2].lines.size(), 2u) << "two lines at most";
  EXPECT_GT(first[3].size.height, first[0].size.height) << "a larger font is taller";
  EXPECT_GT(first[4].lines[0].x, first[0].lines[0].x) << "centred lines move right";
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = std::size(asks); i-- > 0;) {
      const TextLayout again = service->layout(kPrompt, asks[i].style, asks[i].width);
      EXPECT_EQ(again.size, first[i].size) << i;
      ASSERT_EQ(again.lines.size(), first[i].lines.size()) << i;
      for (std::size_t l = 0; l < again.lines.size(); ++l) {
        EXPECT_EQ(again.lines[l].start, first[i].lines[l].start) << i;
        EXPECT_EQ(again.lines[l].x, first[i].lines[l].x) << i;
      }
    }
  }
  const std::string other = std::string(kPrompt) + " Read on.";
  const TextLine last = service->layout(other, Style(), 310).lines.back();
  EXPECT_EQ(last.start + last.length, other.size()) << "another text is laid out anew";
}

TEST(TextLayoutTest, ALineLimitTruncatesTheLastLineWithAnEllipsis) {
  auto service = TextLayoutService::shared();
  for (const int limit : {1, 2, 3}) {
    const TextLayout layout = service->layout(kPrompt, Style(15, limit), 200);
    ASSERT_EQ(layout.lines.size(), static_cast<std::size_t>(limit));
    EXPECT_TRUE(layout.lines.back().truncated) << limit;
    EXPECT_EQ(layout.lines.back().start + layout.lines.back().length, std::string(kPrompt).size())
        << "a truncated line stands for the rest of the text";
    for (std::size_t i = 0; i + 1 < layout.lines.size(); ++i) EXPECT_FALSE(layout.lines[i].truncated);
  }
  const TextLayout fits = service->layout("Terms", Style(15, 1), 200);
  ASSERT_EQ(fits.lines.size(), 1u);
  EXPECT_FALSE(fits.lines[0].truncated) << "a text that fits is not truncated";
}

TEST(TextLayoutTest, AlignmentPlacesEachLineWithinTheWidth) {
  auto service = TextLayoutService::shared();
  struct Case {
    NSTextAlignment alignment;
    double position;  // of the line's free space that lies left of it
  } cases[] = {{NSTextAlignment::left, 0}, {NSTextAlignment::natural, 0}, {NSTextAlignment::center, 0.5},
               {NSTextAlignment::right, 1}};
  for (const Case& c : cases) {
    const TextLayout layout = service->layout(kPrompt, Style(15, 0, c.alignment), 300);
    for (const TextLine& line : layout.lines) {
      EXPECT_NEAR(line.x, (300 - line.width) * c.position, 0.01) << static_cast<int>(c.alignment);
    }
  }
}

TEST(TextLayoutTest, SizesScaleWithTheFontAndBoldIsWider) {
  auto service = TextLayoutService::shared();
  const CGFloat small = service->layout("Read the whole article", Style(10), 0).size.width;
  const CGFloat large = service->layout("Read the whole article", Style(20), 0).size.width;
  EXPECT_NEAR(large / small, 2.0, 0.05) << "no hinting or resolution bends the widths";
  TextStyle bold = Style(10);
  bold.font = UIFont::boldSystemFont(10);
  EXPECT_GT(service->layout("Read the whole article", bold, 0).size.width, small);
}

TEST(TextLayoutTest, LinesStackFromTheTopWithTheirBaselinesInside) {
  const TextLayout layout = TextLayoutService::shared()->layout(kPrompt, Style(17), 250);
  ASSERT_GE(layout.lines.size(), 3u);
  CGFloat top = 0;
  for (const TextLine& line : layout.lines) {
    EXPECT_NEAR(line.top, top, 0.01);
    EXPECT_GT(line.baseline, line.top);
    EXPECT_LT(line.baseline, line.top + line.height);
    top += line.height;
  }
  EXPECT_EQ(layout.size.height, std::ceil(top));
}

}  // namespace
}  // namespace obolo
