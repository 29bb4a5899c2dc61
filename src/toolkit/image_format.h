// Which of the image formats the kit decodes some bytes claim to be.

#ifndef OBOLO_TOOLKIT_IMAGE_FORMAT_H_
#define OBOLO_TOOLKIT_IMAGE_FORMAT_H_

#include <optional>
#include <string_view>

namespace obolo {

// The image formats the kit decodes.
enum class ImageFormat { png, jpeg, gif, webp };

// The format whose signature the bytes start with: the PNG signature, a JPEG
// start-of-image marker followed by another marker, "GIF87a" or "GIF89a", or a
// RIFF container of type "WEBP". None for anything else. Only the signature is
// looked at: whether the rest is a whole image is the decoder's to say.
std::optional<ImageFormat> SniffImageFormat(std::string_view bytes);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_IMAGE_FORMAT_H_
