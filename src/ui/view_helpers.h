// Small helpers on any view: the card's shadow, showing and hiding, and a timed
// show. The platform's extension methods are free functions here, with the
// receiver first. Main thread only.

#ifndef OBOLO_UI_VIEW_HELPERS_H_
#define OBOLO_UI_VIEW_HELPERS_H_

#include <cstdint>
#include <memory>

#include "toolkit/ui_view.h"

namespace obolo {

// On the view's layer, in this order: light grey shadow, opacity 1, offset
// (0, 0), radius 5, corner radius 40. Clipping is left as it is.
void addShadow(UIView& view);

// Shows or hides the view now.
void show(UIView& view);
void hide(UIView& view);

// Shows the view now and hides it again `seconds` later, on a one-shot
// main-loop timer that first logs its interval as one line ("5.0"; an interval
// of zero or less is the platform's 0.1 ms, "0.0001"). The timer keeps the
// view alive until it fires; nothing cancels it, and a second call adds a
// second timer. `seconds` is 64-bit, as is every whole number of seconds the
// kit hands around; an interval beyond 100 years counts as 100 years.
void show(const std::shared_ptr<UIView>& view, std::int64_t seconds);

}  // namespace obolo

#endif  // OBOLO_UI_VIEW_HELPERS_H_
