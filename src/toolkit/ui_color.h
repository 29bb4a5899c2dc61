// A colour: red, green, blue and alpha, each a fraction from 0 to 1.
//
// A plain value, copied freely. The named colours are the platform's.

#ifndef OBOLO_TOOLKIT_UI_COLOR_H_
#define OBOLO_TOOLKIT_UI_COLOR_H_

#include <iosfwd>

#include "toolkit/geometry.h"

namespace obolo {

class UIColor {
 public:
  // From its four components, each a fraction from 0 to 1 (not clamped).
  constexpr UIColor(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha)
      : red_(red), green_(green), blue_(blue), alpha_(alpha) {}

  // A grey of the given white level.
  static constexpr UIColor withWhite(CGFloat white, CGFloat alpha) { return {white, white, white, alpha}; }

  // The platform's named colours: clear is transparent black; the greys are
  // white levels 0.5, 2/3 and 1/3.
  static constexpr UIColor clear() { return withWhite(0, 0); }
  static constexpr UIColor black() { return withWhite(0, 1); }
  static constexpr UIColor white() { return withWhite(1, 1); }
  static constexpr UIColor gray() { return withWhite(0.5, 1); }
  static constexpr UIColor lightGray() { return withWhite(2.0 / 3.0, 1); }
  static constexpr UIColor darkGray() { return withWhite(1.0 / 3.0, 1); }
  // The platform's default tint.
  static constexpr UIColor systemBlue() { return {0, 122.0 / 255.0, 1, 1}; }

  // The components, as given.
  constexpr CGFloat red() const { return red_; }
  constexpr CGFloat green() const { return green_; }
  constexpr CGFloat blue() const { return blue_; }
  constexpr CGFloat alpha() const { return alpha_; }

  friend bool operator==(const UIColor&, const UIColor&) = default;

 private:
  CGFloat red_;
  CGFloat green_;
  CGFloat blue_;
  CGFloat alpha_;
};

// Writes "UIColor(red, green, blue, alpha)", for logs and test messages.
std::ostream& operator<<(std::ostream& out, const UIColor& color);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_COLOR_H_
