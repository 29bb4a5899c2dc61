// The decoder of each image format, behind DecodeImage (image_decoder.h),
// which picks one by the bytes' signature. Each returns none for bytes that
// are not a whole image of its format or exceed the pixel limit; any thread.

#ifndef OBOLO_TOOLKIT_FORMAT_DECODERS_H_
#define OBOLO_TOOLKIT_FORMAT_DECODERS_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "toolkit/decoded_image.h"

namespace obolo {

std::optional<DecodedImage> DecodePng(std::string_view bytes);
std::optional<DecodedImage> DecodeJpeg(std::string_view bytes);
std::optional<DecodedImage> DecodeWebp(std::string_view bytes);
std::optional<DecodedImage> DecodeGif(std::string_view bytes);

// True when an image of this size is within kMaxImageSide and
// kMaxImagePixels and not empty.
bool WithinPixelLimit(std::uint64_t width, std::uint64_t height);

// An image of that size with every pixel transparent black.
// REQUIRES: WithinPixelLimit(width, height).
DecodedImage BlankImage(std::uint32_t width, std::uint32_t height);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_FORMAT_DECODERS_H_
