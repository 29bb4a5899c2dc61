// Decoding image bytes to pixels: PNG with libpng, JPEG with libjpeg-turbo,
// WebP with libwebp and GIF with giflib.
//
// The bytes may come from anywhere on the network (a publisher's logo address
// is the publisher's to choose), so decoding is built to refuse, not to trust:
//  - The pixel size is read from the header and checked against the limits
//    below before any pixel memory is allocated; a small file that claims a
//    huge image (a decompression bomb) is refused without being inflated.
//  - The libraries' working memory is bounded as well: libpng's limits on
//    ancillary chunks, a cap on libjpeg's memory and on a progressive JPEG's
//    number of scans, giflib reading the first frame only.
//  - The libraries' errors never end the process, never print, and never
//    unwind through C++ code: libpng is used through its simplified API,
//    libjpeg's error handler jumps back only across libjpeg's own frames,
//    libwebp and giflib return error codes.
//
// Decoding takes time proportional to the pixels (milliseconds per megapixel),
// so code on the main loop never decodes bytes from the network: they are
// decoded where they arrive, on the HTTP session's thread.

#ifndef OBOLO_TOOLKIT_IMAGE_DECODER_H_
#define OBOLO_TOOLKIT_IMAGE_DECODER_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "toolkit/decoded_image.h"

namespace obolo {

// The largest image the kit decodes: 8 megapixels (32 MiB of pixels), and at
// most 8192 pixels on either side. The kit shows logos, icons and a banner a
// few hundred pixels across; a full-screen picture on the largest phone or
// tablet (2048 x 2732, 5.6 megapixels) still fits. The side limit keeps a
// decoder's row buffers small when the pixel count alone would allow a line
// of millions of pixels.
inline constexpr std::uint32_t kMaxImageSide = 8192;
inline constexpr std::uint64_t kMaxImagePixels = 8ull * 1024 * 1024;

// Decodes PNG, JPEG, WebP or GIF (the first frame) bytes with the well-kept
// decoders; none when the bytes are not a whole image of those formats or the
// image is larger than the pixel limit. Any thread.
//
// Whole means every pixel is there: a file cut short inside its pixel data is
// refused (libjpeg's "premature end of file" counts as an error here, not as
// the grey rows it would fill in), while a missing end marker after the last
// pixel (PNG's IEND, JPEG's EOI, GIF's trailer) is forgiven, as browsers
// forgive it. A PNG's pixels are converted to sRGB as libpng does; a JPEG's
// orientation tag is not applied. A GIF's first frame is drawn on its
// logical screen, transparent elsewhere; an animated WebP is refused.
std::optional<DecodedImage> DecodeImage(std::string_view bytes);

// Called after every DecodeImage, on the thread that decoded, with whether it
// produced an image: lets tests and diagnostics see where decoding runs. An
// empty function removes it. Any thread; the observer must not decode.
using ImageDecodeObserver = std::function<void(bool decoded)>;
void SetImageDecodeObserver(ImageDecodeObserver observer);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_IMAGE_DECODER_H_
