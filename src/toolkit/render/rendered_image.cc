#include "toolkit/render/rendered_image.h"

#include <cairo.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <utility>

namespace obolo {
namespace {

cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const RGBA& pixel) {
  return out << "rgba(" << int{pixel.red} << ", " << int{pixel.green} << ", " << int{pixel.blue} << ", "
             << int{pixel.alpha} << ")";
}

void RenderedImage::SurfaceRelease::operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }

RenderedImage RenderedImage::Failed(std::string error) {
  RenderedImage image;
  image.error_ = std::move(error);
  return image;
}

RenderedImage RenderedImage::Adopt(cairo_surface_t* surface) {
  if (surface == nullptr) return Failed("no surface");
  if (const cairo_status_t status = cairo_surface_status(surface); status != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    return Failed(std::string("cairo: ") + cairo_status_to_string(status));
  }
  if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
      cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
    cairo_surface_destroy(surface);
    return Failed("not a 32-bit image surface");
  }
  RenderedImage image;
  image.surface_ = std::shared_ptr<cairo_surface_t>(surface, SurfaceRelease());
  return image;
}

RenderedImage RenderedImage::FromPngFile(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return Failed("no file " + path);
  cairo_surface_t* read = cairo_image_surface_create_from_png(path.c_str());
  if (cairo_surface_status(read) != CAIRO_STATUS_SUCCESS) {
    const std::string why = cairo_status_to_string(cairo_surface_status(read));
    cairo_surface_destroy(read);
    return Failed(path + ": " + why);
  }
  if (cairo_image_surface_get_format(read) == CAIRO_FORMAT_ARGB32) return Adopt(read);
  // An opaque PNG reads as RGB24: copy it into ARGB32.
  cairo_surface_t* copy = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, cairo_image_surface_get_width(read),
                                                     cairo_image_surface_get_height(read));
  cairo_t* cr = cairo_create(copy);
  cairo_set_source_surface(cr, read, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_destroy(read);
  return Adopt(copy);
}

int RenderedImage::width() const { return surface_ ? cairo_image_surface_get_width(surface_.get()) : 0; }

int RenderedImage::height() const { return surface_ ? cairo_image_surface_get_height(surface_.get()) : 0; }

RGBA RenderedImage::pixel(int x, int y) const {
  if (!surface_ || x < 0 || y < 0 || x >= width() || y >= height()) return {};
  cairo_surface_flush(surface_.get());
  const unsigned char* row =
      cairo_image_surface_get_data(surface_.get()) + static_cast<std::ptrdiff_t>(y) *
                                                         cairo_image_surface_get_stride(surface_.get());
  const std::uint32_t value = reinterpret_cast<const std::uint32_t*>(row)[x];
  const std::uint32_t alpha = value >> 24;
  auto unpremultiply = [alpha](std::uint32_t channel) {
    return static_cast<std::uint8_t>(alpha == 0 ? 0 : (channel * 255 + alpha / 2) / alpha);
  };
  return RGBA{unpremultiply((value >> 16) & 0xff), unpremultiply((value >> 8) & 0xff), unpremultiply(value & 0xff),
              static_cast<std::uint8_t>(alpha)};
}

std::optional<std::string> RenderedImage::png(std::string* error) const {
  if (!surface_) {
    if (error != nullptr) *error = error_.empty() ? "no picture" : error_;
    return std::nullopt;
  }
  std::string bytes;
  const cairo_status_t status = cairo_surface_write_to_png_stream(surface_.get(), &AppendBytes, &bytes);
  if (status != CAIRO_STATUS_SUCCESS) {
    if (error != nullptr) *error = std::string("cairo: ") + cairo_status_to_string(status);
    return std::nullopt;
  }
  return bytes;
}

std::string RenderedImage::writePng(const std::string& path) const {
  std::string error;
  const auto bytes = png(&error);
  if (!bytes) return error;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return "cannot write " + path;
  file.write(bytes->data(), static_cast<std::streamsize>(bytes->size()));
  file.close();
  if (!file) return "cannot write " + path;
  return "";
}

}  // namespace obolo
