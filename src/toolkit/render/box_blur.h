// A blur for the renderer's shadows and blur views: three box passes along
// each axis, which come close to a Gaussian of standard deviation about
// `radius` / 2 (the look of a layer's shadow radius) at a cost that does not
// grow with the radius.

#ifndef OBOLO_TOOLKIT_RENDER_BOX_BLUR_H_
#define OBOLO_TOOLKIT_RENDER_BOX_BLUR_H_

#include <cairo.h>

namespace obolo {

// Blurs an image surface (ARGB32 or A8) in place; `radius` in pixels, nothing
// happens below 1. Edges repeat their pixels outward.
void BoxBlur(cairo_surface_t* surface, int radius);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_BOX_BLUR_H_
