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
// `after` seconds later on a main-loop timer (a delay of 0 or less is the
// platform's shortest, 0.1 ms). The timer keeps the controller alive and adds
// whatever button is attached when it fires, even one removed meanwhile. The
// button's tap and drag target the controller weakly.
// REQUIRES: the controller is owned by a std::shared_ptr; one that is not gets
// no button (a line says so).
void addFloatingButton(UIViewController& controller, std::int64_t after);

// Takes the current button off screen. It stays attached.
void removeFloatingButton(UIViewController& controller);

// The six resting points for the controller's view (loaded if need be) and its
// button, in order: left top, left bottom, right top, left middle, right
// middle, right bottom. They lie within the view's bounds inset by 4 points
// plus half the button's size (4 points alone without a button); the middle
// two sit at half that rectangle's maxY, a little above the view's middle.
// The button rests on the one nearest to it (the first listed on a tie) after
// it is added and whenever a drag ends.
std::array<CGPoint, 6> FloatingButtonSockets(UIViewController& controller);

}  // namespace obolo

#endif  // OBOLO_WALLET_FLOATING_BUTTON_H_
