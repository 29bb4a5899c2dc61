#include "toolkit/render/image_surface.h"

#include <cstdint>

namespace obolo {

cairo_surface_t* NewImageSurface(const UIImage& image) {
  const DecodedImage& pixels = image.pixels();
  const int width = static_cast<int>(pixels.width);
  const int height = static_cast<int>(pixels.height);
  if (width <= 0 || height <= 0 ||
      pixels.pixels.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) ||
      cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, width) != width * 4) {
    return nullptr;
  }
  // The decoded pixels are cairo's own format already: the surface draws
  // straight from them. A surface used only as a source is never written,
  // and it is destroyed before the image can go.
  auto* data = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(pixels.pixels.data()));
  cairo_surface_t* surface = cairo_image_surface_create_for_data(data, CAIRO_FORMAT_ARGB32, width, height, width * 4);
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    return nullptr;
  }
  return surface;
}

}  // namespace obolo
