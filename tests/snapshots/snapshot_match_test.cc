// The comparison the snapshot tests rely on: what counts as the same picture.

#include "snapshot_match.h"

#include <gtest/gtest.h>

#include <memory>

#include "toolkit/render/render.h"

namespace obolo::testing {
namespace {

// A 40 x 20 picture: white, with a grey square whose grey and place are given.
RenderedImage Picture(double grey, CGFloat x, CGSize size = {40, 20}) {
  auto canvas = std::make_shared<UIView>(CGRect({0, 0}, size));
  canvas->setBackgroundColor(UIColor::white());
  auto square = std::make_shared<UIView>(CGRect(x, 5, 10, 10));
  square->setBackgroundColor(UIColor::withWhite(grey, 1));
  canvas->addSubview(square);
  return RenderView(*canvas);
}

TEST(SnapshotMatchTest, SmallChannelDifferencesPassAndMovesOrResizesDoNot) {
  const RenderedImage reference = Picture(0.5, 5);
  struct Case {
    const char* what;
    RenderedImage picture;
    bool sameSize;
    long differing;
  } cases[] = {
      {"the same picture", Picture(0.5, 5), true, 0},
      {"a grey 2/255 lighter: within the tolerance", Picture(0.5 + 2.0 / 255, 5), true, 0},
      {"a grey 20/255 lighter: every pixel of the square", Picture(0.5 + 20.0 / 255, 5), true, 100},
      {"the square moved by 3 points", Picture(0.5, 8), true, 60},
      {"another size", Picture(0.5, 5, {40, 21}), false, 0},
  };
  for (const Case& c : cases) {
    const ImageComparison comparison = CompareImages(reference, c.picture);
    EXPECT_EQ(comparison.sameSize, c.sameSize) << c.what;
    EXPECT_EQ(comparison.differingPixels, c.differing) << c.what;
  }
}

TEST(SnapshotMatchTest, TheDiffMarksTheDifferingPixelsOverAFadedReference) {
  const RenderedImage diff = DiffImage(Picture(0.5, 5), Picture(0.5, 8));
  ASSERT_TRUE(diff.ok());
  EXPECT_EQ(diff.pixel(6, 10), (RGBA{255, 0, 255, 255})) << "where only the reference has the square";
  EXPECT_EQ(diff.pixel(16, 10), (RGBA{255, 0, 255, 255})) << "where only the new picture has it";
  const RGBA kept = diff.pixel(10, 10);
  EXPECT_GT(kept.red, 200) << "the unchanged overlap shows faded";
  EXPECT_EQ(kept.red, kept.green);
}

}  // namespace
}  // namespace obolo::testing
