#include "sandbox/publisher_logo.h"

#include <cmath>

namespace obolo::sandbox {

const std::vector<Rgba>& PublisherLogoPixels() {
  static const std::vector<Rgba> pixels = [] {
    constexpr int kSize = kPublisherLogoSize;
    std::vector<Rgba> drawn(kSize * kSize, kLogoBackground);
    for (int y = 0; y < kSize; ++y) {
      for (int x = 0; x < kSize; ++x) {
        const double r = std::hypot(x + 0.5 - kSize / 2.0, y + 0.5 - kSize / 2.0);
        Rgba& p = drawn[y * kSize + x];
        if (r < 30) p = kLogoDisc;
        if (r >= 12 && r < 20) p = kLogoInk;  // the "O"
      }
    }
    return drawn;
  }();
  return pixels;
}

const std::string& PublisherLogoPng() {
  static const std::string png = EncodePng(kPublisherLogoSize, kPublisherLogoSize, PublisherLogoPixels());
  return png;
}

const std::string& PublisherLogoJpeg() {
  static const std::string jpeg = EncodeJpeg(kPublisherLogoSize, kPublisherLogoSize, PublisherLogoPixels());
  return jpeg;
}

const std::string& PublisherLogoWebp() {
  static const std::string webp =
      EncodeWebp(kPublisherLogoSize, kPublisherLogoSize, PublisherLogoPixels(), /*lossless=*/true);
  return webp;
}

const std::string& PublisherLogoGif() {
  static const std::string gif = EncodeGif(kPublisherLogoSize, kPublisherLogoSize, PublisherLogoPixels());
  return gif;
}

}  // namespace obolo::sandbox
