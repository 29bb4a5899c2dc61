// Turning the decoders' byte-per-channel output into DecodedImage pixels.

#ifndef OBOLO_TOOLKIT_ARGB_PIXELS_H_
#define OBOLO_TOOLKIT_ARGB_PIXELS_H_

#include <cstdint>

#include "toolkit/decoded_image.h"

namespace obolo {

// One premultiplied pixel from straight (not premultiplied) components: each
// colour channel becomes c * a / 255 rounded to the nearest, as cairo rounds.
constexpr std::uint32_t PremultipliedArgb(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a) {
  auto scale = [a](std::uint32_t c) {
    const std::uint32_t t = c * a + 0x80;
    return (t + (t >> 8)) >> 8;
  };
  return (std::uint32_t{a} << 24) | (scale(r) << 16) | (scale(g) << 8) | scale(b);
}

// REQUIRES: image.pixels holds width * height pixels whose bytes, in memory
// order, are straight R, G, B, A (what the decoders write into the buffer).
// Rewrites each in place as a premultiplied native-order ARGB pixel.
void PremultiplyRgbaInPlace(DecodedImage& image);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_ARGB_PIXELS_H_
