// Draws a view tree into a picture: what a reader would see of a window, a
// screen or a single view, without a phone.
//
// Everything the toolkit's views show is drawn: background colours, corner
// radii, borders and shadows from the layer, alpha and hidden views, clipping,
// labels (font, colour, alignment, lines, wrapping, attributed underlines and
// colours), buttons (their title and image subviews), image views in their
// content modes (template images in the tint), the activity indicator, the
// blur view (a real blur of what lies beneath it, with its style's tint), the
// web view (an outlined page area with its address: the page itself is the
// browser's), and alerts and presented screens, which are views in the window.
// Text is set by the toolkit's text layout service, so it breaks into lines
// exactly where the layout pass measured it.
//
// Before drawing, the tree is laid out (layoutIfNeeded); when the options ask
// for another size, the root is resized to it first, as a screen of that size
// would resize its window. Rendering the same tree twice gives the same pixels.
//
// Main thread only (it lays views out). Failures (a size too large, the fonts
// missing, cairo failing) come back as a RenderedImage with an error, never as
// a crash.

#ifndef OBOLO_TOOLKIT_RENDER_RENDER_H_
#define OBOLO_TOOLKIT_RENDER_RENDER_H_

#include <optional>

#include "toolkit/geometry.h"
#include "toolkit/render/rendered_image.h"
#include "toolkit/ui_color.h"
#include "toolkit/ui_view.h"

namespace obolo {

struct RenderOptions {
  // The size to draw, in points; the root's own size when unset.
  std::optional<CGSize> size;
  // Pixels per point: 1, 2 or 3 as on phones (any value from 0.25 to 4 works).
  double scale = 1;
  // Painted under everything; transparent when unset.
  std::optional<UIColor> background;
};

// Draws `root` (a window, a screen controller's view, any view) and its tree.
// A hidden root draws nothing but the background.
RenderedImage RenderView(UIView& root, const RenderOptions& options = {});

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_RENDER_H_
