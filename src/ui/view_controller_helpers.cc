#include "ui/view_controller_helpers.h"

#include <utility>

#include "toolkit/ui_alert_controller.h"

namespace obolo {
namespace {

void Present(const std::shared_ptr<UIViewController>& controller, const std::string& message,
             const std::string& title, UIColor color, const std::string& okTitle,
             UIAlertAction::Handler handler) {
  if (!controller) return;
  auto alert = std::make_shared<UIAlertController>(title, message, UIAlertController::Style::alert);
  if (color.alpha() > 0) alert->setTintColor(color);
  alert->addAction(
      std::make_shared<UIAlertAction>(okTitle, UIAlertAction::Style::defaultStyle, std::move(handler)));
  controller->present(alert, /*animated=*/true, nullptr);
}

}  // namespace

void showSimpleAlert(const std::shared_ptr<UIViewController>& controller, const std::string& message,
                     const std::string& title, UIColor color, const std::string& okTitle) {
  Present(controller, message, title, color, okTitle, nullptr);
}

void showSimpleAlert(const std::shared_ptr<UIViewController>& controller, const std::string& message,
                     const std::string& title, UIColor color, const std::string& okTitle,
                     std::function<void()> okAction) {
  Present(controller, message, title, color, okTitle, [okAction = std::move(okAction)](const auto&) {
    if (okAction) okAction();
  });
}

}  // namespace obolo
