// The views whose content is not an image or text: the activity indicator's
// spinner and the web view's page area.

#ifndef OBOLO_TOOLKIT_RENDER_DRAW_CONTROLS_H_
#define OBOLO_TOOLKIT_RENDER_DRAW_CONTROLS_H_

#include "toolkit/render/draw_context.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/wk_web_view.h"

namespace obolo {

// Eight grey spokes, fading round the circle, centred in the view.
void DrawActivityIndicator(DrawContext& context, const UIActivityIndicatorView& indicator);

// The page area: a light grey field outlined, an address bar with a padlock
// and the address being shown, and a line saying the browser draws the page.
void DrawWebPage(DrawContext& context, const WKWebView& web);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_DRAW_CONTROLS_H_
