// Draws an image into a rectangle as an image view's content mode says, or
// as a template in a tint colour.

#ifndef OBOLO_TOOLKIT_RENDER_DRAW_IMAGE_H_
#define OBOLO_TOOLKIT_RENDER_DRAW_IMAGE_H_

#include "toolkit/render/draw_context.h"
#include "toolkit/ui_image.h"
#include "toolkit/ui_view.h"

namespace obolo {

// Where an image of `image` points goes in `bounds` under `mode`.
CGRect ImageDestination(CGSize image, CGRect bounds, UIViewContentMode mode);

// Draws `image` in `bounds` (current user space). Template images (and only
// they) are drawn as their shape in `tint`. An image without pixels draws
// nothing.
void DrawImage(DrawContext& context, const UIImage& image, CGRect bounds, UIViewContentMode mode, UIColor tint);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_DRAW_IMAGE_H_
