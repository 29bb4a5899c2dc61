// Alerts: a title, a message and buttons (actions), presented modally.
//
// The alert's view shows what a reader sees: the screen dimmed, and in its
// middle a rounded panel 270 points wide with a label for the title, one for
// the message, and a button per action below them, in the order the actions
// were added, each under a hairline. The panel's height follows its content.
// Tapping an action (its button, or tap(action) in a test) dismisses the
// alert, as the platform does for every action, and runs the action's handler
// once the dismissal has completed. An alert that is not presented ignores
// taps. The view's tint is the alert's tint colour when one is set.
//
// Handlers are held by their actions, which the alert holds: a handler must
// not capture its alert strongly. Main thread only.

#ifndef OBOLO_TOOLKIT_UI_ALERT_CONTROLLER_H_
#define OBOLO_TOOLKIT_UI_ALERT_CONTROLLER_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/ui_button.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {

// One button of an alert: its title, style, whether it can be tapped, and the
// handler a tap runs once the alert is gone.
class UIAlertAction : public NSObject {
 public:
  // The platform's raw values.
  enum class Style { defaultStyle = 0, cancel = 1, destructive = 2 };
  // What a tap on the action runs, given the action.
  using Handler = std::function<void(const std::shared_ptr<UIAlertAction>&)>;

  // An enabled action; `handler` may be empty.
  UIAlertAction(std::optional<std::string> title, Style style, Handler handler = nullptr)
      : title_(std::move(title)), style_(style), handler_(std::move(handler)) {}

  // What the action is made of; setEnabled(false) makes taps on it ignored.
  const std::optional<std::string>& title() const { return title_; }
  Style style() const { return style_; }
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) { enabled_ = enabled; }
  bool hasHandler() const { return handler_ != nullptr; }

 private:
  friend class UIAlertController;
  std::optional<std::string> title_;
  Style style_;
  Handler handler_;
  bool enabled_ = true;
};

class UIAlertController : public UIViewController {
 public:
  // The platform's raw values.
  enum class Style { actionSheet = 0, alert = 1 };

  // An alert without actions yet.
  UIAlertController(std::optional<std::string> title, std::optional<std::string> message,
                    Style preferred_style)
      : title_(std::move(title)), message_(std::move(message)), preferred_style_(preferred_style) {}

  // What it was made with.
  const std::optional<std::string>& title() const { return title_; }
  const std::optional<std::string>& message() const { return message_; }
  Style preferredStyle() const { return preferred_style_; }

  // Adds a button, after the others.
  void addAction(const std::shared_ptr<UIAlertAction>& action);
  const std::vector<std::shared_ptr<UIAlertAction>>& actions() const { return actions_; }

  // The colour of the alert's buttons; none for the platform's tint.
  std::optional<UIColor> tintColor() const { return tint_color_; }
  void setTintColor(std::optional<UIColor> color);

  // A reader's tap on `action`: ignored unless the alert is presented and the
  // action is one of its own and enabled.
  void tap(const std::shared_ptr<UIAlertAction>& action);

  // The views a reader sees (after the view has loaded).
  std::shared_ptr<UILabel> titleLabel() const { return title_label_; }
  std::shared_ptr<UILabel> messageLabel() const { return message_label_; }
  const std::vector<std::shared_ptr<UIButton>>& actionButtons() const { return buttons_; }

  void loadView() override;

 private:
  void addButton(const std::shared_ptr<UIAlertAction>& action);
  void onButtonTapped(const std::shared_ptr<UIButton>& button);
  // Ties the panel's bottom to the lowest view in it.
  void closePanelBelow(const std::shared_ptr<UIView>& lowest);

  std::optional<std::string> title_;
  std::optional<std::string> message_;
  Style preferred_style_;
  std::vector<std::shared_ptr<UIAlertAction>> actions_;
  std::optional<UIColor> tint_color_;
  std::shared_ptr<UILabel> title_label_;
  std::shared_ptr<UILabel> message_label_;
  std::vector<std::shared_ptr<UIButton>> buttons_;
  std::shared_ptr<UIView> panel_;
  std::shared_ptr<NSLayoutConstraint> panel_bottom_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_ALERT_CONTROLLER_H_
