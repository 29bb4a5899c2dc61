// PNG through libpng's simplified API, which keeps libpng's error handling
// (its setjmp and longjmp) inside libpng: a failure comes back as a zero
// return with the reason in image.message, never as a jump through our code.

#include <png.h>

#include "toolkit/argb_pixels.h"
#include "toolkit/format_decoders.h"

namespace obolo {
namespace {

// Releases what libpng holds for a read, on every way out.
class PngRead {
 public:
  PngRead() {
    image_.version = PNG_IMAGE_VERSION;
    image_.opaque = nullptr;
  }
  ~PngRead() { png_image_free(&image_); }
  PngRead(const PngRead&) = delete;
  PngRead& operator=(const PngRead&) = delete;

  png_image& image() { return image_; }

 private:
  png_image image_{};
};

}  // namespace

std::optional<DecodedImage> DecodePng(std::string_view bytes) {
  PngRead read;
  png_image& image = read.image();
  // Reads the signature and the chunks up to the first pixel data: the size
  // is known before anything is inflated.
  if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return std::nullopt;
  if (!WithinPixelLimit(image.width, image.height)) return std::nullopt;

  // 8-bit sRGB with straight alpha, whatever the file's depth, palette or
  // gamma; premultiplied below.
  image.format = PNG_FORMAT_RGBA;
  DecodedImage decoded = BlankImage(image.width, image.height);
  if (!png_image_finish_read(&image, nullptr, decoded.pixels.data(), 0, nullptr)) return std::nullopt;
  PremultiplyRgbaInPlace(decoded);
  return decoded;
}

}  // namespace obolo
