// A view that shows text: a line, or as many lines as numberOfLines allows.
//
// Its intrinsic size is the size of its text set in its font (text_layout.h):
// unbounded, for the width; wrapped within the width the layout pass gives
// it, for the height. An empty label has intrinsic size (0, 0). Changing the
// text or how it is set tells the layout pass.

#ifndef OBOLO_TOOLKIT_UI_LABEL_H_
#define OBOLO_TOOLKIT_UI_LABEL_H_

#include <optional>
#include <string>

#include "toolkit/attributed_string.h"
#include "toolkit/text_layout.h"
#include "toolkit/ui_font.h"
#include "toolkit/ui_view.h"

namespace obolo {

class UILabel : public UIView {
 public:
  // The constructors of UIView.
  using UIView::UIView;

  // None until set. Setting plain text drops an attributed text.
  const std::optional<std::string>& text() const { return text_; }
  void setText(std::optional<std::string> text);
  // Setting an attributed text also sets the plain text to its characters.
  const std::optional<NSAttributedString>& attributedText() const { return attributed_text_; }
  void setAttributedText(std::optional<NSAttributedString> text);
  // Black text on one line unless set otherwise; 0 lines means as many as
  // the text needs.
  UIColor textColor() const { return text_color_; }
  void setTextColor(UIColor color) { text_color_ = color; }
  // Default: the system font at 17 points.
  UIFont font() const { return style_.font; }
  void setFont(UIFont font);
  NSTextAlignment textAlignment() const { return style_.alignment; }
  void setTextAlignment(NSTextAlignment alignment);
  // Default 1; 0 for as many lines as the text needs.
  int numberOfLines() const { return style_.numberOfLines; }
  void setNumberOfLines(int lines);
  NSLineBreakMode lineBreakMode() const { return style_.lineBreakMode; }
  void setLineBreakMode(NSLineBreakMode mode);

  // How the text is set, for the renderer.
  const TextStyle& textStyle() const { return style_; }

  CGSize intrinsicContentSize() const override;
  CGSize intrinsicContentSizeForWidth(CGFloat width) const override;

 private:
  void textChanged();
  CGSize measure(CGFloat width) const;

  std::optional<std::string> text_;
  std::optional<NSAttributedString> attributed_text_;
  UIColor text_color_ = UIColor::black();
  TextStyle style_;
  // The last measurements, unbounded and wrapped, until the text or style
  // changes: every layout pass asks again.
  mutable std::optional<CGSize> natural_;
  mutable std::optional<std::pair<CGFloat, CGSize>> wrapped_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_LABEL_H_
