#include "toolkit/ui_alert_controller.h"

#include <algorithm>

namespace obolo {
namespace {

constexpr CGFloat kAlertWidth = 270;
constexpr CGFloat kLineHeight = 44;

}  // namespace

void UIAlertController::addAction(const std::shared_ptr<UIAlertAction>& action) {
  if (!action) return;
  actions_.push_back(action);
  if (isViewLoaded()) addButton(action);
}

void UIAlertController::setTintColor(std::optional<UIColor> color) {
  tint_color_ = color;
  if (isViewLoaded()) view()->setTintColor(color);
}

void UIAlertController::loadView() {
  UIViewController::loadView();
  auto root = view();
  root->setTintColor(tint_color_);
  const CGRect bounds = root->bounds();
  const CGFloat x = bounds.midX() - kAlertWidth / 2;
  title_label_ =
      std::make_shared<UILabel>(CGRect(x, bounds.midY() - 2 * kLineHeight, kAlertWidth, kLineHeight));
  title_label_->setText(title_);
  message_label_ =
      std::make_shared<UILabel>(CGRect(x, bounds.midY() - kLineHeight, kAlertWidth, kLineHeight));
  message_label_->setText(message_);
  message_label_->setNumberOfLines(0);
  root->addSubview(title_label_);
  root->addSubview(message_label_);
  for (const auto& action : actions_) addButton(action);
}

void UIAlertController::addButton(const std::shared_ptr<UIAlertAction>& action) {
  const CGRect bounds = view()->bounds();
  const CGFloat y = bounds.midY() + kLineHeight * static_cast<CGFloat>(buttons_.size());
  auto button =
      std::make_shared<UIButton>(CGRect(bounds.midX() - kAlertWidth / 2, y, kAlertWidth, kLineHeight));
  button->setTitle(action->title(), UIControlState::normal);
  button->setEnabled(action->isEnabled());
  button->addTarget(selfAs(this), &UIAlertController::onButtonTapped, UIControlEvent::touchUpInside);
  buttons_.push_back(button);
  view()->addSubview(button);
}

void UIAlertController::onButtonTapped(const std::shared_ptr<UIButton>& button) {
  auto it = std::find(buttons_.begin(), buttons_.end(), button);
  if (it != buttons_.end()) tap(actions_[static_cast<std::size_t>(it - buttons_.begin())]);
}

void UIAlertController::tap(const std::shared_ptr<UIAlertAction>& action) {
  if (!action || !action->isEnabled()) return;
  if (std::find(actions_.begin(), actions_.end(), action) == actions_.end()) return;
  if (presentingViewController() == nullptr || isBeingDismissed()) return;
  dismiss(/*animated=*/true, [action] {
    if (action->handler_) action->handler_(action);
  });
}

}  // namespace obolo
