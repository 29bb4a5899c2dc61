#include "toolkit/render/image_surface.h"

namespace obolo {

// Decoded pixels arrive with the toolkit's image decoding; until then images
// are not drawn.
cairo_surface_t* NewImageSurface(const UIImage& /*image*/) { return nullptr; }

}  // namespace obolo
