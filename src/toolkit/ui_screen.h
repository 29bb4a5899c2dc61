// The device's main screen. Its bounds are what the kit sizes full-screen views
// and the floating button's start by; tests set them to the device they mimic.
// Main thread only.

#ifndef OBOLO_TOOLKIT_UI_SCREEN_H_
#define OBOLO_TOOLKIT_UI_SCREEN_H_

#include "toolkit/geometry.h"

namespace obolo {

class UIScreen {
 public:
  // The device's screen.
  static UIScreen& main();

  // 390 x 844 points at origin (0, 0) until set: a common phone.
  CGRect bounds() const { return bounds_; }
  void setBounds(CGRect bounds) { bounds_ = bounds; }

 private:
  UIScreen() = default;
  CGRect bounds_{0, 0, 390, 844};
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_SCREEN_H_
