#include <gtest/gtest.h>

#include <string>

#include "sandbox/publisher_logo.h"
#include "support/pixels.h"
#include "toolkit/ui_image.h"

namespace obolo {
namespace {

using testing::ChannelDistance;
using testing::Opaque;
using testing::PixelAt;

TEST(UIImageTest, EveryFormatMakesADecodedImageAndACutOneMakesNone) {
  struct Case {
    const char* what;
    const std::string& bytes;
    ImageFormat format;
    int tolerance;
  } cases[] = {
      {"PNG", sandbox::PublisherLogoPng(), ImageFormat::png, 0},
      {"JPEG", sandbox::PublisherLogoJpeg(), ImageFormat::jpeg, 12},
      {"WebP", sandbox::PublisherLogoWebp(), ImageFormat::webp, 0},
      {"GIF", sandbox::PublisherLogoGif(), ImageFormat::gif, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto image = UIImage::fromData(c.bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->format(), c.format);
    EXPECT_EQ(image->size(), (CGSize{64, 64}));
    EXPECT_EQ(image->data(), c.bytes);
    EXPECT_TRUE(image->name().empty());
    ASSERT_EQ(image->pixels().width, 64u);
    ASSERT_EQ(image->pixels().height, 64u);
    // White in the corner, amber at the centre, the dark "O" in between.
    EXPECT_LE(ChannelDistance(PixelAt(image->pixels(), 0, 0), Opaque(sandbox::kLogoBackground)), c.tolerance);
    EXPECT_LE(ChannelDistance(PixelAt(image->pixels(), 32, 32), Opaque(sandbox::kLogoDisc)), c.tolerance);
    EXPECT_LE(ChannelDistance(PixelAt(image->pixels(), 32, 16), Opaque(sandbox::kLogoInk)), c.tolerance);

    EXPECT_EQ(UIImage::fromData(c.bytes.substr(0, c.bytes.size() / 2)), nullptr);
  }
  EXPECT_EQ(UIImage::fromData("<html>Not Found</html>"), nullptr);
}

TEST(UIImageTest, TheKitsImagesLoadByNameDecodedAtTheirPixelSize) {
  const auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  ASSERT_TRUE(kit.has_value());
  for (const char* name : {"checkbox", "blankbox", "background", "wallet-icon"}) {
    SCOPED_TRACE(name);
    const auto image = UIImage::named(name, kit);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->name(), name);
    EXPECT_EQ(image->format(), ImageFormat::png);
    const DecodedImage& pixels = image->pixels();
    EXPECT_GT(pixels.width, 0u);
    EXPECT_EQ(image->size(),
              (CGSize{static_cast<CGFloat>(pixels.width), static_cast<CGFloat>(pixels.height)}));
    EXPECT_EQ(pixels.pixels.size(), std::size_t{pixels.width} * pixels.height);
  }
  EXPECT_EQ(UIImage::named("no-such-image", kit), nullptr);
}

TEST(UIImageTest, ACopyInAnotherRenderingModeSharesTheBytesAndThePixels) {
  const auto image = UIImage::named("checkbox", Bundle::withIdentifier(Bundle::kKitIdentifier));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->renderingMode(), UIImageRenderingMode::automatic);
  const auto tinted = image->withRenderingMode(UIImageRenderingMode::alwaysTemplate);
  EXPECT_EQ(tinted->renderingMode(), UIImageRenderingMode::alwaysTemplate);
  EXPECT_EQ(image->renderingMode(), UIImageRenderingMode::automatic) << "the original is unchanged";
  EXPECT_EQ(&tinted->pixels(), &image->pixels());
  EXPECT_EQ(&tinted->data(), &image->data());
  EXPECT_EQ(tinted->name(), "checkbox");
  EXPECT_EQ(tinted->size(), image->size());
}

}  // namespace
}  // namespace obolo
