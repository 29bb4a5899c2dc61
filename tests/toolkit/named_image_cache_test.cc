#include <gtest/gtest.h>

#include "platform/bundle.h"
#include "toolkit/ui_image.h"

namespace obolo {
namespace {

TEST(NamedImageCacheTest, AnImageLoadedByNameIsLoadedOnceAndShared) {
  const auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  auto first = UIImage::named("background", kit);
  ASSERT_NE(first, nullptr);
  auto again = UIImage::named("background", kit);
  EXPECT_EQ(again, first) << "the second request is served from the cache";
  EXPECT_EQ(again->size(), (CGSize{750, 348}));
  EXPECT_NE(UIImage::named("checkbox", kit), first) << "another name is another image";
}

TEST(NamedImageCacheTest, AMissingImageStaysMissing) {
  const auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  EXPECT_EQ(UIImage::named("no-such-image", kit), nullptr);
  EXPECT_EQ(UIImage::named("no-such-image", kit), nullptr);
}

}  // namespace
}  // namespace obolo
