#include "toolkit/render/box_blur.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace obolo {
namespace {

// One box pass over `count` samples spaced `step` apart, for one channel:
// reads them from `in`, writes the blurred samples contiguously to `out`.
void BoxPass(const std::uint8_t* in, std::uint8_t* out, int count, std::ptrdiff_t step, int half) {
  const int window = 2 * half + 1;
  auto at = [&](int i) -> int { return in[std::clamp(i, 0, count - 1) * step]; };
  int sum = 0;
  for (int i = -half; i <= half; ++i) sum += at(i);
  for (int i = 0; i < count; ++i) {
    out[i] = static_cast<std::uint8_t>((sum + window / 2) / window);
    sum += at(i + half + 1) - at(i - half);
  }
}

}  // namespace

void BoxBlur(cairo_surface_t* surface, int radius) {
  if (radius < 1 || surface == nullptr) return;
  const cairo_format_t format = cairo_image_surface_get_format(surface);
  if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_A8) return;
  cairo_surface_flush(surface);
  const int width = cairo_image_surface_get_width(surface);
  const int height = cairo_image_surface_get_height(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const int channels = format == CAIRO_FORMAT_ARGB32 ? 4 : 1;
  std::uint8_t* data = cairo_image_surface_get_data(surface);
  if (data == nullptr || width == 0 || height == 0) return;

  // Three passes of a box of about radius / 2 on each side per axis.
  const int half = std::max(1, radius / 2);
  std::vector<std::uint8_t> line(static_cast<std::size_t>(std::max(width, height)));
  for (int pass = 0; pass < 3; ++pass) {
    for (int y = 0; y < height; ++y) {
      std::uint8_t* row = data + static_cast<std::ptrdiff_t>(y) * stride;
      for (int c = 0; c < channels; ++c) {
        BoxPass(row + c, line.data(), width, channels, half);
        for (int x = 0; x < width; ++x) row[x * channels + c] = line[static_cast<std::size_t>(x)];
      }
    }
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) {
        std::uint8_t* column = data + x * channels + c;
        BoxPass(column, line.data(), height, stride, half);
        for (int y = 0; y < height; ++y) column[static_cast<std::ptrdiff_t>(y) * stride] = line[static_cast<std::size_t>(y)];
      }
    }
  }
  cairo_surface_mark_dirty(surface);
}

}  // namespace obolo
