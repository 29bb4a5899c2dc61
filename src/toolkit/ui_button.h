// A tappable control with a title and an image per control state.
//
// titleLabel() and imageView() are the button's own subviews, made on first
// use; they always show what the button shows for its current state: the
// attributed title when one is set, else the plain title, in the title colour
// when one is set; the state's image. A state without a value of its own uses
// the normal state's. Main thread only.

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

 protected:
  void stateDidChange() override { refresh(); }

 private:
  void refresh();

  ButtonType type_ = ButtonType::custom;
  std::map<UIControlState, std::optional<std::string>> titles_;
  std::map<UIControlState, std::optional<UIColor>> title_colors_;
  std::map<UIControlState, std::optional<NSAttributedString>> attributed_titles_;
  std::map<UIControlState, std::shared_ptr<const UIImage>> images_;
  std::shared_ptr<UILabel> title_label_;
  std::shared_ptr<UIImageView> image_view_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_BUTTON_H_
