// The sandbox publisher's logo, drawn in code: 64 x 64 pixels, a dark "O" on
// an amber disc on white. The wallet site serves it in every format the kit
// decodes, as publishers' logos come: PNG, JPEG, WebP and GIF.

#ifndef OBOLO_SANDBOX_PUBLISHER_LOGO_H_
#define OBOLO_SANDBOX_PUBLISHER_LOGO_H_

#include <string>
#include <vector>

#include "sandbox/image_encoders.h"

namespace obolo::sandbox {

inline constexpr int kPublisherLogoSize = 64;

// The logo's pixels, row by row, and the colours it is drawn in.
const std::vector<Rgba>& PublisherLogoPixels();
inline constexpr Rgba kLogoBackground{255, 255, 255, 255};
inline constexpr Rgba kLogoDisc{242, 169, 0, 255};
inline constexpr Rgba kLogoInk{33, 37, 41, 255};

// The logo's files. Each is made once; safe to call from any thread.
const std::string& PublisherLogoPng();
const std::string& PublisherLogoJpeg();
const std::string& PublisherLogoWebp();  // lossless
const std::string& PublisherLogoGif();

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_PUBLISHER_LOGO_H_
