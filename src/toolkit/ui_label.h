// A view that shows a line of text.

#ifndef OBOLO_TOOLKIT_UI_LABEL_H_
#define OBOLO_TOOLKIT_UI_LABEL_H_

#include <optional>
#include <string>

#include "toolkit/attributed_string.h"
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
  int numberOfLines() const { return number_of_lines_; }
  void setNumberOfLines(int lines) { number_of_lines_ = lines; }

 private:
  std::optional<std::string> text_;
  std::optional<NSAttributedString> attributed_text_;
  UIColor text_color_ = UIColor::black();
  int number_of_lines_ = 1;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_LABEL_H_
