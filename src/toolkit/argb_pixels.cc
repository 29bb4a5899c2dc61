#include "toolkit/argb_pixels.h"

#include <cstring>

namespace obolo {

void PremultiplyRgbaInPlace(DecodedImage& image) {
  for (std::uint32_t& pixel : image.pixels) {
    unsigned char rgba[4];
    std::memcpy(rgba, &pixel, sizeof rgba);
    if (rgba[3] == 255) {  // most pixels of most images: nothing to multiply
      pixel = 0xFF000000u | std::uint32_t{rgba[0]} << 16 | std::uint32_t{rgba[1]} << 8 | rgba[2];
    } else {
      pixel = PremultipliedArgb(rgba[0], rgba[1], rgba[2], rgba[3]);
    }
  }
}

}  // namespace obolo
