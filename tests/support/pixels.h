// Reading decoded pixels in tests: the pixel format written out by hand
// (alpha, red, green, blue from the top byte down), so an expectation never
// borrows the kit's own conversion.

#ifndef OBOLO_TESTS_SUPPORT_PIXELS_H_
#define OBOLO_TESTS_SUPPORT_PIXELS_H_

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "sandbox/image_encoders.h"
#include "toolkit/decoded_image.h"

namespace obolo::testing {

constexpr std::uint32_t Argb(std::uint32_t a, std::uint32_t r, std::uint32_t g, std::uint32_t b) {
  return a << 24 | r << 16 | g << 8 | b;
}

// An opaque colour as a decoded pixel: premultiplying by 255 changes nothing.
constexpr std::uint32_t Opaque(const sandbox::Rgba& c) { return Argb(255, c.r, c.g, c.b); }

inline std::uint32_t PixelAt(const DecodedImage& image, std::uint32_t x, std::uint32_t y) {
  return image.pixels.at(std::size_t{y} * image.width + x);
}

// The largest difference between the two pixels in any one channel, alpha
// included: how far a lossy format strayed.
inline int ChannelDistance(std::uint32_t a, std::uint32_t b) {
  int largest = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    largest = std::max(
        largest, std::abs(static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF)));
  }
  return largest;
}

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_PIXELS_H_
