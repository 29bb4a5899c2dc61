// A minimal PNG encoder (8-bit RGB, no interlacing, stored deflate blocks) and
// the publisher logo the sandbox serves, drawn in code so no binary file has
// to ship with it.

#ifndef OBOLO_SANDBOX_PNG_IMAGE_H_
#define OBOLO_SANDBOX_PNG_IMAGE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace obolo::sandbox {

struct Rgb {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
};

// The PNG file of a `width` x `height` image given row by row, top row first.
// REQUIRES: pixels.size() == width * height, both at least 1.
std::string EncodePng(int width, int height, const std::vector<Rgb>& pixels);

// The sandbox publisher's logo: a 64 x 64 PNG, a dark "O" on a coloured disc.
// Made once; safe to call from any thread.
const std::string& PublisherLogoPng();

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_PNG_IMAGE_H_
