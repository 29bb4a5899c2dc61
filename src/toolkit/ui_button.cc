#include "toolkit/ui_button.h"

#include <utility>

namespace obolo {
namespace {

// The state's own value, else the normal state's.
template <class Value>
Value Lookup(const std::map<UIControlState, Value>& values, UIControlState state) {
  if (auto it = values.find(state); it != values.end() && it->second) return it->second;
  if (auto it = values.find(UIControlState::normal); it != values.end()) return it->second;
  return Value{};
}

}  // namespace

void UIButton::setTitle(std::optional<std::string> title, UIControlState state) {
  titles_[state] = std::move(title);
  refresh();
}

std::optional<std::string> UIButton::title(UIControlState state) const { return Lookup(titles_, state); }

void UIButton::setTitleColor(std::optional<UIColor> color, UIControlState state) {
  title_colors_[state] = color;
  refresh();
}

std::optional<UIColor> UIButton::titleColor(UIControlState state) const {
  return Lookup(title_colors_, state);
}

void UIButton::setAttributedTitle(std::optional<NSAttributedString> title, UIControlState state) {
  attributed_titles_[state] = std::move(title);
  refresh();
}

std::optional<NSAttributedString> UIButton::attributedTitle(UIControlState state) const {
  return Lookup(attributed_titles_, state);
}

void UIButton::setImage(std::shared_ptr<const UIImage> image, UIControlState state) {
  images_[state] = std::move(image);
  refresh();
}

std::shared_ptr<const UIImage> UIButton::image(UIControlState state) const { return Lookup(images_, state); }

std::shared_ptr<UILabel> UIButton::titleLabel() {
  if (!title_label_) {
    title_label_ = std::make_shared<UILabel>(CGRect(CGPoint{}, bounds().size));
    addSubview(title_label_);
    refresh();
  }
  return title_label_;
}

std::shared_ptr<UIImageView> UIButton::imageView() {
  if (!image_view_) {
    image_view_ = std::make_shared<UIImageView>(CGRect(CGPoint{}, bounds().size));
    insertSubview(image_view_, 0);
    refresh();
  }
  return image_view_;
}

void UIButton::refresh() {
  const UIControlState current = state();
  if (title_label_) {
    if (auto attributed = attributedTitle(current)) {
      title_label_->setAttributedText(std::move(attributed));
    } else {
      title_label_->setText(title(current));
    }
    if (auto color = titleColor(current)) title_label_->setTextColor(*color);
  }
  if (image_view_) image_view_->setImage(image(current));
}

}  // namespace obolo
