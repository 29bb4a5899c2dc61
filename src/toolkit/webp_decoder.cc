// WebP through libwebp's simple decoding API, which reports failure by its
// return value. The still image of a WebP file, lossy or lossless, with or
// without alpha; an animation is refused (libwebp's simple API does not
// decode one).

#include <webp/decode.h>

#include "toolkit/argb_pixels.h"
#include "toolkit/format_decoders.h"

namespace obolo {

std::optional<DecodedImage> DecodeWebp(std::string_view bytes) {
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  int width = 0;
  int height = 0;
  // Reads only the headers: the size is checked before anything is decoded.
  if (!WebPGetInfo(data, bytes.size(), &width, &height)) return std::nullopt;
  if (width <= 0 || height <= 0 || !WithinPixelLimit(width, height)) return std::nullopt;

  DecodedImage image = BlankImage(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
  auto* pixels = reinterpret_cast<std::uint8_t*>(image.pixels.data());
  const std::size_t size = image.pixels.size() * sizeof(std::uint32_t);
  if (!WebPDecodeRGBAInto(data, bytes.size(), pixels, size, width * 4)) return std::nullopt;
  PremultiplyRgbaInPlace(image);
  return image;
}

}  // namespace obolo
