// A font: a size in points and a weight, in the one family the toolkit sets
// text in.
//
// Text is measured and drawn in DejaVu Sans (kit_fonts.h) whatever fonts the
// machine has, so a layout and a picture come out the same everywhere. A plain
// value, copied freely.

#ifndef OBOLO_TOOLKIT_UI_FONT_H_
#define OBOLO_TOOLKIT_UI_FONT_H_

#include "toolkit/geometry.h"

namespace obolo {

class UIFont {
 public:
  // The weights the family has.
  enum class Weight { regular, bold };

  // The kit's font at `size` points (at least 1), regular or bold.
  static constexpr UIFont systemFont(CGFloat size, Weight weight = Weight::regular) { return {size, weight}; }
  static constexpr UIFont boldSystemFont(CGFloat size) { return {size, Weight::bold}; }

  // Its size in points, its weight, and the same face at another size.
  constexpr CGFloat pointSize() const { return point_size_; }
  constexpr Weight weight() const { return weight_; }
  constexpr UIFont withSize(CGFloat size) const { return {size, weight_}; }

  friend bool operator==(const UIFont&, const UIFont&) = default;

 private:
  constexpr UIFont(CGFloat size, Weight weight) : point_size_(size > 0 ? size : 1), weight_(weight) {}

  CGFloat point_size_;
  Weight weight_;
};

// The platform's raw values.
enum class NSTextAlignment { left = 0, center = 1, right = 2, justified = 3, natural = 4 };
enum class NSLineBreakMode {
  byWordWrapping = 0,
  byCharWrapping = 1,
  byClipping = 2,
  byTruncatingHead = 3,
  byTruncatingTail = 4,
  byTruncatingMiddle = 5,
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_FONT_H_
