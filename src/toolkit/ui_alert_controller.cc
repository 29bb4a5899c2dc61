#include "toolkit/ui_alert_controller.h"

#include <algorithm>

namespace obolo {
namespace {

constexpr CGFloat kAlertWidth = 270;
constexpr CGFloat kButtonHeight = 44;
constexpr CGFloat kPadding = 16;
constexpr UIColor kDimming = UIColor::withWhite(0, 0.4);
constexpr UIColor kPanel = UIColor::withWhite(0.97, 1);
constexpr UIColor kHairline = UIColor::withWhite(0.8, 1);

std::shared_ptr<UILabel> AlertLabel(std::optional<std::string> text, UIFont font) {
  auto label = std::make_shared<UILabel>();
  label->setTranslatesAutoresizingMaskIntoConstraints(false);
  label->setText(std::move(text));
  label->setFont(font);
  label->setNumberOfLines(0);
  label->setTextAlignment(NSTextAlignment::center);
  return label;
}

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
  root->setBackgroundColor(kDimming);

  panel_ = std::make_shared<UIView>();
  panel_->setTranslatesAutoresizingMaskIntoConstraints(false);
  panel_->setBackgroundColor(kPanel);
  panel_->layer().setCornerRadius(14);
  panel_->setClipsToBounds(true);
  root->addSubview(panel_);

  title_label_ = AlertLabel(title_, UIFont::boldSystemFont(17));
  message_label_ = AlertLabel(message_, UIFont::systemFont(13));
  panel_->addSubview(title_label_);
  panel_->addSubview(message_label_);
  NSLayoutConstraint::activate({
      panel_->widthAnchor().equalToConstant(kAlertWidth),
      panel_->centerXAnchor().equalTo(root->centerXAnchor()),
      panel_->centerYAnchor().equalTo(root->centerYAnchor()),
      title_label_->topAnchor().equalTo(panel_->topAnchor(), 20),
      message_label_->topAnchor().equalTo(title_label_->bottomAnchor(), 4),
      title_label_->leadingAnchor().equalTo(panel_->leadingAnchor(), kPadding),
      panel_->trailingAnchor().equalTo(title_label_->trailingAnchor(), kPadding),
      message_label_->leadingAnchor().equalTo(panel_->leadingAnchor(), kPadding),
      panel_->trailingAnchor().equalTo(message_label_->trailingAnchor(), kPadding),
  });
  closePanelBelow(nullptr);
  for (const auto& action : actions_) addButton(action);
}

void UIAlertController::closePanelBelow(const std::shared_ptr<UIView>& lowest) {
  if (panel_bottom_) panel_bottom_->setActive(false);
  panel_bottom_ = lowest ? panel_->bottomAnchor().equalTo(lowest->bottomAnchor())
                         : panel_->bottomAnchor().equalTo(message_label_->bottomAnchor(), 20);
  panel_bottom_->setActive(true);
}

void UIAlertController::addButton(const std::shared_ptr<UIAlertAction>& action) {
  auto hairline = std::make_shared<UIView>();
  hairline->setTranslatesAutoresizingMaskIntoConstraints(false);
  hairline->setBackgroundColor(kHairline);
  auto button = std::make_shared<UIButton>(UIButton::ButtonType::system);
  button->setTranslatesAutoresizingMaskIntoConstraints(false);
  button->setTitle(action->title(), UIControlState::normal);
  button->titleLabel()->setFont(action->style() == UIAlertAction::Style::cancel ? UIFont::boldSystemFont(17)
                                                                                 : UIFont::systemFont(17));
  if (action->style() == UIAlertAction::Style::destructive) {
    button->setTitleColor(UIColor(1, 0.23, 0.19, 1), UIControlState::normal);
  }
  button->setEnabled(action->isEnabled());
  button->addTarget(selfAs(this), &UIAlertController::onButtonTapped, UIControlEvent::touchUpInside);
  const std::shared_ptr<UIView> above =
      buttons_.empty() ? std::static_pointer_cast<UIView>(message_label_) : buttons_.back();
  buttons_.push_back(button);
  panel_->addSubview(hairline);
  panel_->addSubview(button);
  NSLayoutConstraint::activate({
      hairline->topAnchor().equalTo(above->bottomAnchor(), buttons_.size() == 1 ? 20 : 0),
      hairline->heightAnchor().equalToConstant(1),
      hairline->leadingAnchor().equalTo(panel_->leadingAnchor()),
      hairline->trailingAnchor().equalTo(panel_->trailingAnchor()),
      button->topAnchor().equalTo(hairline->bottomAnchor()),
      button->heightAnchor().equalToConstant(kButtonHeight),
      button->leadingAnchor().equalTo(panel_->leadingAnchor()),
      button->trailingAnchor().equalTo(panel_->trailingAnchor()),
  });
  closePanelBelow(button);
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
