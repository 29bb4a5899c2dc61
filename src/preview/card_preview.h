// Renders a publisher's own card without a phone: the kit runs over the
// service's answer to a bid, as it would on a reader's screen, and the screen
// is drawn.
//
// A publisher's designer previews the card with obolo-render; a host app
// calls RenderCardPreview() from its own snapshot tests. The kit's real
// purchase logic decides what to show from the answer: the card (with the
// unlock button hidden when the balance is short and no credit is allowed), the
// splash of an article already paid for, or nothing when the paywall does not
// apply. Nothing goes over the network: an in-process session answers every
// call with the given answer (and the logo's address with the given logo),
// and a session store in memory starts the reader logged out.
//
// Main thread only, in a process that runs no paywall of its own meanwhile:
// while it runs, the preview installs its own HTTP session and preference
// store and sets the main screen's size, and puts all three back before it
// returns. Like any construction of Obolo, it overwrites the kit's
// configuration.

#ifndef OBOLO_PREVIEW_CARD_PREVIEW_H_
#define OBOLO_PREVIEW_CARD_PREVIEW_H_

#include <optional>
#include <string>

#include "entry/position.h"
#include "toolkit/geometry.h"
#include "toolkit/render/rendered_image.h"

namespace obolo {

// What to draw: the service's answer, where the card sits and on which
// screen, as a designer would choose them.
struct CardPreviewRequest {
  // The service's answer to a bid, as JSON: {"success": ..., "data": {...}}.
  std::string bidAnswer;
  // Where the card sits over the article.
  Position position = Position::center;
  // The reader's screen, in points, and its pixels per point.
  CGSize screen{390, 844};
  double scale = 2;
  // The publisher's logo (PNG, JPEG, GIF or WebP bytes). Without one, the
  // logo's place shows the loading indicator, as while a logo is on its way.
  std::optional<std::string> logo;
};

struct CardPreview {
  // The screen, or a failure saying why there is none (an answer that does
  // not decode as a bid, a size that cannot be drawn).
  RenderedImage image;
  // What the kit made of the answer: "card", "reveal" (the article was paid
  // for already: the thank-you splash) or "hidden" (the paywall does not
  // apply: the article shows as it is). Empty on failure.
  std::string outcome;
};

// Draws what the kit would show for the request's answer (see above for the
// threading and what it borrows meanwhile).
CardPreview RenderCardPreview(const CardPreviewRequest& request);

}  // namespace obolo

#endif  // OBOLO_PREVIEW_CARD_PREVIEW_H_
