// Image encoders on the formats' own libraries (libpng, libjpeg-turbo,
// libwebp, giflib): the sandbox serves its publisher logo with them, and
// tests and benchmarks make images of every format the kit decodes with them,
// so no binary file has to ship.

#ifndef OBOLO_SANDBOX_IMAGE_ENCODERS_H_
#define OBOLO_SANDBOX_IMAGE_ENCODERS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace obolo::sandbox {

// One pixel: straight (not premultiplied) 8-bit sRGB components.
struct Rgba {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  std::uint8_t a = 255;

  friend bool operator==(const Rgba&, const Rgba&) = default;
};

// Each encoder takes a `width` x `height` image given row by row, top row
// first, and returns the file's bytes, or the empty text when it cannot
// encode the image. Thread-safe.
// REQUIRES: pixels.size() == width * height, both at least 1.

// An 8-bit RGBA PNG.
std::string EncodePng(int width, int height, const std::vector<Rgba>& pixels);

// A JPEG (YCbCr, 4:2:0) of the colours; alpha is dropped. `quality` 1 to 100.
// A progressive file when `progressive`.
std::string EncodeJpeg(int width, int height, const std::vector<Rgba>& pixels, int quality = 90,
                       bool progressive = false);

// A WebP file: lossless, or lossy at `quality` (0 to 100), with alpha either way.
std::string EncodeWebp(int width, int height, const std::vector<Rgba>& pixels, bool lossless,
                       float quality = 90);

// A GIF89a still image, interlaced when asked. Pixels with alpha 0 become
// the transparent colour; empty when the image has more than 255 other
// colours or a pixel that is neither opaque nor fully transparent.
std::string EncodeGif(int width, int height, const std::vector<Rgba>& pixels, bool interlaced = false);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_IMAGE_ENCODERS_H_
