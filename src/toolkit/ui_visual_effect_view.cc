#include "toolkit/ui_visual_effect_view.h"

namespace obolo {

std::shared_ptr<UIView> UIVisualEffectView::contentView() {
  if (!content_view_) {
    content_view_ = std::make_shared<UIView>(CGRect(CGPoint{}, bounds().size));
    content_view_->setAutoresizingMask(UIViewAutoresizing::flexibleWidth |
                                       UIViewAutoresizing::flexibleHeight);
    addSubview(content_view_);
  }
  return content_view_;
}

}  // namespace obolo
