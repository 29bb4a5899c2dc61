// A tappable control with a title and an image per control state.
//
// titleLabel() and imageView() are the button's own subviews, made on first
// use (at the latest by the layout pass, once there is a title or an image to
// show); they always show what the button shows for its current state: the
// attributed title when one is set, else the plain title, in the title colour
// when one is set (a system button's tint otherwise); the state's image. A
// state without a value of its own uses the normal state's.
//
// Layout: within the bounds less contentEdgeInsets, the image and then the
// title sit side by side, 8 points apart, centred vertically and placed across
// by contentHorizontalAlignment. The image is drawn at imageSize (its own pixel
// size when unset), scaled down to fit; the title takes the width left and
// wraps when its label allows more than one line. The intrinsic size is that
// content plus the insets. Main thread only.

#ifndef OBOLO_TOOLKIT_UI_BUTTON_H_
#define OBOLO_TOOLKIT_UI_BUTTON_H_

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "toolkit/attributed_string.h"
#include "toolkit/ui_control.h"
#include "toolkit/ui_image.h"
#include "toolkit/ui_image_view.h"
#include "toolkit/ui_label.h"

namespace obolo {

class UIButton : public UIControl {
 public:
  // The platform's button types (raw values).
  enum class ButtonType { custom = 0, system = 1 };

  // A custom button, with a frame, or of a type.
  UIButton() = default;
  explicit UIButton(CGRect frame) : UIControl(frame) {}
  explicit UIButton(ButtonType type) : type_(type) {}

  ButtonType buttonType() const { return type_; }  // custom unless made with a type

  // Title, title colour, attributed title and image per control state. A state
  // without a value of its own shows the normal state's.
  void setTitle(std::optional<std::string> title, UIControlState state);
  std::optional<std::string> title(UIControlState state) const;
  void setTitleColor(std::optional<UIColor> color, UIControlState state);
  // None unless set for the state or for normal.
  std::optional<UIColor> titleColor(UIControlState state) const;
  // The attributed title and the image, per state likewise.
  void setAttributedTitle(std::optional<NSAttributedString> title, UIControlState state);
  std::optional<NSAttributedString> attributedTitle(UIControlState state) const;
  void setImage(std::shared_ptr<const UIImage> image, UIControlState state);
  std::shared_ptr<const UIImage> image(UIControlState state) const;

  // What the button shows in its current state.
  std::optional<std::string> currentTitle() const { return title(state()); }
  std::shared_ptr<const UIImage> currentImage() const { return image(state()); }

  // The subviews that show the title and the image, made on first use.
  std::shared_ptr<UILabel> titleLabel();
  std::shared_ptr<UIImageView> imageView();

  // Room kept between the button's edges and its image and title.
  UIEdgeInsets contentEdgeInsets() const { return content_insets_; }
  void setContentEdgeInsets(UIEdgeInsets insets);
  // The size the image is drawn at, in points. The toolkit's images have no
  // scale of their own, so a button that shows a large bitmap at icon size
  // says so here.
  std::optional<CGSize> imageSize() const { return image_size_; }
  void setImageSize(std::optional<CGSize> size);

  void layoutSubviews() override;
  CGSize intrinsicContentSize() const override;
  CGSize intrinsicContentSizeForWidth(CGFloat width) const override;

  // Space between the image and the title.
  static constexpr CGFloat kImageTitleSpacing = 8;

 protected:
  void stateDidChange() override { refresh(); }

 private:
  void refresh();
  // The image's drawn size, before any scaling down to fit.
  CGSize imageDisplaySize() const;
  // The title's size when it may take `width` (unbounded for 0 or less).
  CGSize titleSize(CGFloat width) const;
  CGSize contentSize(CGFloat width) const;

  ButtonType type_ = ButtonType::custom;
  std::map<UIControlState, std::optional<std::string>> titles_;
  std::map<UIControlState, std::optional<UIColor>> title_colors_;
  std::map<UIControlState, std::optional<NSAttributedString>> attributed_titles_;
  std::map<UIControlState, std::shared_ptr<const UIImage>> images_;
  std::shared_ptr<UILabel> title_label_;
  std::shared_ptr<UIImageView> image_view_;
  UIEdgeInsets content_insets_;
  std::optional<CGSize> image_size_;
  // The title as the label will show it, for measuring before the label exists.
  std::optional<std::string> shown_title_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_BUTTON_H_
