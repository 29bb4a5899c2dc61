#include "toolkit/ui_label.h"

#include <utility>

namespace obolo {

void UILabel::setText(std::optional<std::string> text) {
  text_ = std::move(text);
  attributed_text_.reset();
}

void UILabel::setAttributedText(std::optional<NSAttributedString> text) {
  attributed_text_ = std::move(text);
  text_ = attributed_text_ ? std::optional<std::string>(attributed_text_->string()) : std::nullopt;
}

}  // namespace obolo
