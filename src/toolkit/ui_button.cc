#include "toolkit/ui_button.h"

#include <algorithm>
#include <cmath>
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

// A button's title is set in the system font at 15 points unless its label says otherwise.
constexpr CGFloat kTitleFontSize = 15;

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
    title_label_->setFont(UIFont::systemFont(kTitleFontSize));
    addSubview(title_label_);
    refresh();
  }
  return title_label_;
}

std::shared_ptr<UIImageView> UIButton::imageView() {
  if (!image_view_) {
    image_view_ = std::make_shared<UIImageView>(CGRect(CGPoint{}, bounds().size));
    image_view_->setContentMode(UIViewContentMode::scaleAspectFit);
    insertSubview(image_view_, 0);
    refresh();
  }
  return image_view_;
}

void UIButton::setContentEdgeInsets(UIEdgeInsets insets) {
  content_insets_ = insets;
  invalidateIntrinsicContentSize();
  setNeedsLayout();
}

void UIButton::setImageSize(std::optional<CGSize> size) {
  image_size_ = size;
  invalidateIntrinsicContentSize();
  setNeedsLayout();
}

void UIButton::refresh() {
  const UIControlState current = state();
  auto attributed = attributedTitle(current);
  shown_title_ = attributed ? std::optional<std::string>(attributed->string()) : title(current);
  if (title_label_) {
    if (attributed) {
      title_label_->setAttributedText(std::move(attributed));
    } else {
      title_label_->setText(title(current));
    }
    if (auto color = titleColor(current)) {
      title_label_->setTextColor(*color);
    } else if (type_ == ButtonType::system) {
      title_label_->setTextColor(tintColor());
    }
  }
  if (image_view_) image_view_->setImage(image(current));
  invalidateIntrinsicContentSize();
  setNeedsLayout();
}

CGSize UIButton::imageDisplaySize() const {
  auto shown = image(state());
  if (!shown) return CGSize{0, 0};
  return image_size_ ? *image_size_ : shown->size();
}

CGSize UIButton::titleSize(CGFloat width) const {
  if (!shown_title_ || shown_title_->empty()) return CGSize{0, 0};
  if (title_label_) {
    return title_label_->numberOfLines() == 1 || width <= 0 ? title_label_->intrinsicContentSize()
                                                            : title_label_->intrinsicContentSizeForWidth(width);
  }
  TextStyle style;
  style.font = UIFont::systemFont(kTitleFontSize);
  return TextLayoutService::shared()->layout(*shown_title_, style, 0).size;
}

CGSize UIButton::contentSize(CGFloat width) const {
  const CGSize image = imageDisplaySize();
  const bool both = image.width > 0 && shown_title_ && !shown_title_->empty();
  const CGFloat spacing = both ? kImageTitleSpacing : 0;
  const CGFloat insets = content_insets_.left + content_insets_.right;
  const CGSize title = titleSize(width > 0 ? std::max<CGFloat>(width - insets - image.width - spacing, 1) : 0);
  return CGSize{image.width + spacing + title.width + insets,
                std::max(image.height, title.height) + content_insets_.top + content_insets_.bottom};
}

CGSize UIButton::intrinsicContentSize() const { return contentSize(0); }

CGSize UIButton::intrinsicContentSizeForWidth(CGFloat width) const { return contentSize(width); }

void UIButton::layoutSubviews() {
  UIControl::layoutSubviews();
  const bool hasTitle = shown_title_ && !shown_title_->empty();
  if (hasTitle) titleLabel();
  if (image(state())) imageView();
  // A system button's title takes the tint of the tree it is in by now.
  if (title_label_ && type_ == ButtonType::system && !titleColor(state())) title_label_->setTextColor(tintColor());

  const CGRect bounds = this->bounds();
  const CGRect content(bounds.minX() + content_insets_.left, bounds.minY() + content_insets_.top,
                       std::max<CGFloat>(bounds.width() - content_insets_.left - content_insets_.right, 0),
                       std::max<CGFloat>(bounds.height() - content_insets_.top - content_insets_.bottom, 0));
  CGSize image = imageDisplaySize();
  if (image.width > content.width() || image.height > content.height()) {
    const CGFloat scale = std::min(image.width > 0 ? content.width() / image.width : 1,
                                   image.height > 0 ? content.height() / image.height : 1);
    image = CGSize{image.width * scale, image.height * scale};
  }
  const CGFloat spacing = image.width > 0 && hasTitle ? kImageTitleSpacing : 0;
  const CGFloat room = std::max<CGFloat>(content.width() - image.width - spacing, 0);
  const auto alignment = contentHorizontalAlignment();
  CGSize title = hasTitle ? titleSize(room) : CGSize{0, 0};
  title.width = alignment == UIControlContentHorizontalAlignment::fill ? room : std::min(title.width, room);

  const CGFloat total = image.width + spacing + title.width;
  CGFloat x = content.minX();
  if (alignment == UIControlContentHorizontalAlignment::center) x += (content.width() - total) / 2;
  if (alignment == UIControlContentHorizontalAlignment::right) x += content.width() - total;
  x = std::round(x);
  if (image_view_) {
    image_view_->setFrame(CGRect(x, std::round(content.midY() - image.height / 2), image.width, image.height));
  }
  if (title_label_) {
    title_label_->setTextAlignment(alignment == UIControlContentHorizontalAlignment::center  ? NSTextAlignment::center
                                   : alignment == UIControlContentHorizontalAlignment::right ? NSTextAlignment::right
                                                                                              : NSTextAlignment::left);
    title_label_->setFrame(
        CGRect(x + image.width + spacing, std::round(content.midY() - title.height / 2), title.width, title.height));
  }
}

}  // namespace obolo
