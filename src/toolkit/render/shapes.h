// Paths the renderer fills, clips and strokes with.

#ifndef OBOLO_TOOLKIT_RENDER_SHAPES_H_
#define OBOLO_TOOLKIT_RENDER_SHAPES_H_

#include <cairo.h>

#include "toolkit/geometry.h"

namespace obolo {

// A rectangle with corners of `radius` (at most half its shorter side), as
// the current path.
void RoundedRectangle(cairo_t* cr, CGRect rect, double radius);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_SHAPES_H_
