// Colours from hexadecimal text such as "#FF8800".
//
// HexColorComponents is the whole rule, as a pure function that needs no
// toolkit; hexStringToUIColor wraps its result in a UIColor. The rule:
//   1. trim white space and line breaks (the Unicode set) from both ends;
//   2. upper-case (fully: "ß" becomes "SS", the ligature "ﬀ" becomes "FF");
//   3. remove one leading "#", if there is one;
//   4. unless exactly six user-perceived characters remain, the colour is the
//      platform's grey (white 0.5, opaque): there is no "#FFF" short form and no
//      eight-digit form with alpha;
//   5. read the six characters as the platform's hexadecimal scanner does: skip
//      leading white space and line breaks, accept an optional "0X" prefix, then
//      take the longest run of ASCII hexadecimal digits; no digit reads as 0;
//   6. red, green and blue are bits 16-23, 8-15 and 0-7 of the value over 255;
//      alpha is 1.
// So "##FF880" is black (after one "#" the scanner meets "#") and "12ZZZZ" is
// blue 18/255.

#ifndef OBOLO_UI_HEX_COLOR_H_
#define OBOLO_UI_HEX_COLOR_H_

#include <string_view>

#include "toolkit/ui_color.h"

namespace obolo {

// A colour as four fractions from 0 to 1.
struct ColorComponents {
  // Red, green, blue and opacity.
  double red;
  double green;
  double blue;
  double alpha;
  friend bool operator==(const ColorComponents&, const ColorComponents&) = default;
};

// The colour of `hex` by the rule above, as components.
ColorComponents HexColorComponents(std::string_view hex);

// The platform exposes this on any colour value, which plays no part; here it
// is a free function.
UIColor hexStringToUIColor(std::string_view hex);

}  // namespace obolo

#endif  // OBOLO_UI_HEX_COLOR_H_
