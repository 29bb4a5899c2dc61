#include "toolkit/image_format.h"

namespace obolo {

std::optional<ImageFormat> SniffImageFormat(std::string_view bytes) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\x89PNG\r\n\x1a\n"sv)) return ImageFormat::png;
  if (bytes.starts_with("\xFF\xD8\xFF"sv)) return ImageFormat::jpeg;
  if (bytes.starts_with("GIF87a"sv) || bytes.starts_with("GIF89a"sv)) return ImageFormat::gif;
  if (bytes.size() >= 12 && bytes.starts_with("RIFF"sv) && bytes.substr(8, 4) == "WEBP"sv)
    return ImageFormat::webp;
  return std::nullopt;
}

}  // namespace obolo
