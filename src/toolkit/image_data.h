// Tells whether bytes are an image the toolkit can show, and its pixel size.
//
// PNG is checked in full: signature, chunk structure and every chunk's CRC, a
// valid header, a palette where one is needed, and the compressed pixel data,
// which is inflated (zlib) and must yield exactly the rows the header promises,
// each with a valid filter byte. A truncated or corrupted PNG is no image.
// JPEG and GIF, which the toolkit never draws, are checked as far as their
// headers: JPEG needs its start marker, a frame header with a non-zero size and
// its end marker; GIF needs its signature, a non-zero screen size, an image
// descriptor and its trailer. Their compressed pixels are not decoded.

#ifndef OBOLO_TOOLKIT_IMAGE_DATA_H_
#define OBOLO_TOOLKIT_IMAGE_DATA_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace obolo {

enum class ImageFormat { png, jpeg, gif };

struct ImageInfo {
  // The format and the size in pixels.
  ImageFormat format;
  std::uint32_t width;
  std::uint32_t height;
};

std::optional<ImageInfo> InspectImageData(std::string_view bytes);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_IMAGE_DATA_H_
