#include <png.h>

#include "sandbox/image_encoders.h"

namespace obolo::sandbox {

std::string EncodePng(int width, int height, const std::vector<Rgba>& pixels) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGBA;
  // Speed over size: the logo is small either way, and tests make images of
  // millions of pixels with this.
  image.flags = PNG_IMAGE_FLAG_FAST;
  static_assert(sizeof(Rgba) == 4, "pixels are handed to libpng as RGBA bytes");

  // The first call measures, the second writes; libpng's errors come back as
  // a zero return (the simplified API keeps its longjmp to itself).
  png_alloc_size_t size = 0;
  if (!png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr)) return {};
  std::string png(size, '\0');
  if (!png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr)) return {};
  png.resize(size);
  return png;
}

}  // namespace obolo::sandbox
