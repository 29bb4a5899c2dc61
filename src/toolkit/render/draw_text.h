// Draws a label's text where the text layout service put its lines.
//
// Each line is set again with Pango (its cairo back end, over the same fonts
// and options as the measuring service) and drawn at the line's position and
// baseline; a truncated line is set in one line within the label's width and
// ends in an ellipsis. The text block is centred vertically in the label, as
// the platform does. Attributed text brings its colours and underlines.

#ifndef OBOLO_TOOLKIT_RENDER_DRAW_TEXT_H_
#define OBOLO_TOOLKIT_RENDER_DRAW_TEXT_H_

#include <string>

#include "toolkit/render/draw_context.h"
#include "toolkit/ui_label.h"

namespace obolo {

void DrawLabel(DrawContext& context, const UILabel& label);

// Draws one line of plain text with its left end at (x, baseline) in the
// current user space: the web view's address, say.
void DrawTextLine(DrawContext& context, const std::string& text, const UIFont& font, UIColor color, double x,
                  double baseline);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_DRAW_TEXT_H_
