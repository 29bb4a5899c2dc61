#include "ui/button_helpers.h"

#include "toolkit/ui_application.h"
#include "toolkit/url.h"
#include "ui/consents.h"

namespace obolo {

void setImageTintColor(UIButton& button, UIColor color) {
  auto image = button.imageView()->image();
  button.setImage(image ? image->withRenderingMode(UIImageRenderingMode::alwaysTemplate) : nullptr,
                  UIControlState::normal);
  button.setTintColor(color);
}

void underline(UIButton& button) {
  auto label = button.titleLabel();
  const auto& text = label->text();
  if (!text || text->empty()) return;
  const UIColor color = button.titleColor(UIControlState::normal).value_or(label->textColor());
  NSMutableAttributedString title(*text);
  title.addAttribute(NSAttributedStringKey::underlineColor, color);
  title.addAttribute(NSAttributedStringKey::foregroundColor, color);
  title.addAttribute(NSAttributedStringKey::underlineStyle, NSUnderlineStyle::single);
  button.setAttributedTitle(std::move(title), UIControlState::normal);
}

std::string_view ConsentUrlForTag(int tag) {
  switch (tag) {
    case 0:
      return Consents::TERMS_URL;
    case 2:
      return Consents::CONTACT_URL;
    default:
      return Consents::PRIVACY_URL;
  }
}

void openUrl(const UIButton& button) {
  auto url = URL::fromString(ConsentUrlForTag(button.tag()));
  if (!url) return;
  UIApplication::shared().open(*url, {}, nullptr);
}

}  // namespace obolo
