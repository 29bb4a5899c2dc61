// An image's decoded pixels as a cairo surface.

#ifndef OBOLO_TOOLKIT_RENDER_IMAGE_SURFACE_H_
#define OBOLO_TOOLKIT_RENDER_IMAGE_SURFACE_H_

#include <cairo.h>

#include "toolkit/ui_image.h"

namespace obolo {

// A new ARGB32 surface with the image's pixels (the caller destroys it); null
// when the image has no pixels to draw.
cairo_surface_t* NewImageSurface(const UIImage& image);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_IMAGE_SURFACE_H_
