// The floating wallet button any screen controller can carry.
//
// After an article is unlocked the paywall puts a small round wallet button
// over the host's screen. The reader drags it anywhere; let go, it glides to the
// nearest of six resting places (sockets) along the left and right edges.
// Tapping it opens the wallet screen full screen.
//
// The button is attached to the controller as an associated object, so the
// controller keeps it alive and carries at most one. Main thread only.

#ifndef OBOLO_WALLET_FLOATING_BUTTON_H_
#define OBOLO_WALLET_FLOATING_BUTTON_H_

#include <array>
#include <cstdint>
#include <memory>

#include "toolkit/geometry.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {

// The controller's current button; null when none was attached.
std::shared_ptr<UIButton> floatingButton(const UIViewController& controller);

// Creates the button, attaches it (replacing an earlier one, which is not
// taken off screen), snaps it to a socket, and adds it to the controller's view
// `seconds` later on a main-loop timer. The timer keeps the controller alive
// and adds whatever button is attached when it fires, even one removed meanwhile.
void addFloatingButton(UIViewController& controller, std::int64_t after);

// Takes the current button off screen. It stays attached.
void removeFloatingButton(UIViewController& controller);

// The six resting points for the controller's view and its button, in order:
// left top, left bottom, right top, left middle, right middle, right bottom.
std::array<CGPoint, 6> FloatingButtonSockets(const UIViewController& controller);

}  // namespace obolo

#endif  // OBOLO_WALLET_FLOATING_BUTTON_H_
