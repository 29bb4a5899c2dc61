// A view that shows an image, or nothing, fitted to its bounds by its content
// mode. Its intrinsic size is the image's size (none without an image).

#ifndef OBOLO_TOOLKIT_UI_IMAGE_VIEW_H_
#define OBOLO_TOOLKIT_UI_IMAGE_VIEW_H_

#include <memory>

#include "toolkit/ui_image.h"
#include "toolkit/ui_view.h"

namespace obolo {

class UIImageView : public UIView {
 public:
  // The constructors of UIView, and one that shows `image` at its own size.
  using UIView::UIView;
  explicit UIImageView(std::shared_ptr<const UIImage> image) : image_(std::move(image)) {
    if (image_) setFrame(CGRect(CGPoint{}, image_->size()));
  }

  // The image shown; null for none.
  const std::shared_ptr<const UIImage>& image() const { return image_; }
  void setImage(std::shared_ptr<const UIImage> image) {
    const bool resized = !image != !image_ || (image && image->size() != image_->size());
    image_ = std::move(image);
    if (resized) invalidateIntrinsicContentSize();
  }

  CGSize intrinsicContentSize() const override {
    return image_ ? image_->size() : CGSize{UIViewNoIntrinsicMetric, UIViewNoIntrinsicMetric};
  }

 private:
  std::shared_ptr<const UIImage> image_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_IMAGE_VIEW_H_
