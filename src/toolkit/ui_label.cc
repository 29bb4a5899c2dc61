#include "toolkit/ui_label.h"

#include <utility>

namespace obolo {

void UILabel::setText(std::optional<std::string> text) {
  const bool same = text == text_ && !attributed_text_;
  text_ = std::move(text);
  attributed_text_.reset();
  if (!same) textChanged();
}

void UILabel::setAttributedText(std::optional<NSAttributedString> text) {
  attributed_text_ = std::move(text);
  text_ = attributed_text_ ? std::optional<std::string>(attributed_text_->string()) : std::nullopt;
  textChanged();
}

void UILabel::setFont(UIFont font) {
  if (font == style_.font) return;
  style_.font = font;
  textChanged();
}

void UILabel::setTextAlignment(NSTextAlignment alignment) {
  if (alignment == style_.alignment) return;
  style_.alignment = alignment;
  textChanged();
}

void UILabel::setNumberOfLines(int lines) {
  if (lines == style_.numberOfLines) return;
  style_.numberOfLines = lines;
  textChanged();
}

void UILabel::setLineBreakMode(NSLineBreakMode mode) {
  if (mode == style_.lineBreakMode) return;
  style_.lineBreakMode = mode;
  textChanged();
}

void UILabel::textChanged() {
  natural_.reset();
  wrapped_.reset();
  invalidateIntrinsicContentSize();
}

CGSize UILabel::measure(CGFloat width) const {
  if (!text_ || text_->empty()) return CGSize{0, 0};
  if (width <= 0 && natural_) return *natural_;
  if (width > 0 && wrapped_ && wrapped_->first == width) return wrapped_->second;
  const CGSize size = TextLayoutService::shared()->layout(*text_, style_, width).size;
  if (width <= 0) {
    natural_ = size;
  } else {
    wrapped_ = std::make_pair(width, size);
  }
  return size;
}

CGSize UILabel::intrinsicContentSize() const { return measure(0); }

CGSize UILabel::intrinsicContentSizeForWidth(CGFloat width) const { return measure(width > 0 ? width : 0); }

}  // namespace obolo
