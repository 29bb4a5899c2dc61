// The pixels of a decoded image, ready to draw.

#ifndef OBOLO_TOOLKIT_DECODED_IMAGE_H_
#define OBOLO_TOOLKIT_DECODED_IMAGE_H_

#include <cstdint>
#include <vector>

namespace obolo {

// Pixels of a decoded image: premultiplied ARGB, 32 bits per pixel in native
// byte order (cairo's CAIRO_FORMAT_ARGB32), rows top to bottom, no padding.
// A renderer wraps them in an image surface as they are, without converting.
struct DecodedImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint32_t> pixels;  // width * height
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_DECODED_IMAGE_H_
