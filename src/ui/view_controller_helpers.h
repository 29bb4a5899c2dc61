// Alerts from any screen controller.

#ifndef OBOLO_UI_VIEW_CONTROLLER_HELPERS_H_
#define OBOLO_UI_VIEW_CONTROLLER_HELPERS_H_

#include <functional>
#include <memory>
#include <string>

#include "toolkit/ui_view_controller.h"

namespace obolo {

// Presents, animated and without completion, an alert with `title` and
// `message` and one default-style action titled `okTitle`. Tapping the action
// dismisses the alert; in the second form `okAction` then runs. `color`, when
// not fully transparent, tints the alert (its buttons); the default, clear,
// leaves the platform's tint. Main thread only.
void showSimpleAlert(const std::shared_ptr<UIViewController>& controller, const std::string& message,
                     const std::string& title = "", UIColor color = UIColor::clear(),
                     const std::string& okTitle = "OK");
void showSimpleAlert(const std::shared_ptr<UIViewController>& controller, const std::string& message,
                     const std::string& title, UIColor color, const std::string& okTitle,
                     std::function<void()> okAction);

}  // namespace obolo

#endif  // OBOLO_UI_VIEW_CONTROLLER_HELPERS_H_
