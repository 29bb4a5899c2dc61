// How a view follows changes of its superview's size: an option set with the
// platform's bit values.

#ifndef OBOLO_TOOLKIT_AUTORESIZING_MASK_H_
#define OBOLO_TOOLKIT_AUTORESIZING_MASK_H_

namespace obolo {

enum class UIViewAutoresizing : unsigned {
  none = 0,
  flexibleLeftMargin = 1 << 0,
  flexibleWidth = 1 << 1,
  flexibleRightMargin = 1 << 2,
  flexibleTopMargin = 1 << 3,
  flexibleHeight = 1 << 4,
  flexibleBottomMargin = 1 << 5,
};

// The option set's operations: union, intersection, whether every option of
// `option` is in `mask`, and the platform's raw bits.
constexpr UIViewAutoresizing operator|(UIViewAutoresizing a, UIViewAutoresizing b) {
  return static_cast<UIViewAutoresizing>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr UIViewAutoresizing operator&(UIViewAutoresizing a, UIViewAutoresizing b) {
  return static_cast<UIViewAutoresizing>(static_cast<unsigned>(a) & static_cast<unsigned>(b));
}
constexpr bool Contains(UIViewAutoresizing mask, UIViewAutoresizing option) {
  return (static_cast<unsigned>(mask) & static_cast<unsigned>(option)) == static_cast<unsigned>(option);
}
constexpr unsigned RawValue(UIViewAutoresizing mask) { return static_cast<unsigned>(mask); }

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_AUTORESIZING_MASK_H_
