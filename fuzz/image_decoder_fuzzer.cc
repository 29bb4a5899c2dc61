// Any bytes from the network, as a logo's body: decoding gives an image within
// the pixel limit, with exactly its pixels, or none; never a crash, a leak or
// an allocation beyond the limit (run with -rss_limit_mb and
// -malloc_limit_mb to hold it to that).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "toolkit/image_decoder.h"
#include "toolkit/ui_image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto image = obolo::DecodeImage(bytes);
  if (image) {
    if (image->width == 0 || image->height == 0) std::abort();
    if (image->width > obolo::kMaxImageSide || image->height > obolo::kMaxImageSide) std::abort();
    if (std::uint64_t{image->width} * image->height > obolo::kMaxImagePixels) std::abort();
    if (image->pixels.size() != std::size_t{image->width} * image->height) std::abort();
    // Premultiplied: no colour channel exceeds its pixel's alpha.
    for (std::uint32_t pixel : image->pixels) {
      const std::uint32_t alpha = pixel >> 24;
      if (((pixel >> 16) & 0xFF) > alpha || ((pixel >> 8) & 0xFF) > alpha || (pixel & 0xFF) > alpha)
        std::abort();
    }
  }
  // The image view's path: an image exactly when the decoder made one.
  const auto ui_image = obolo::UIImage::fromData(std::string(bytes));
  if ((ui_image != nullptr) != image.has_value()) std::abort();
  return 0;
}
