// A window scene and its status bar: where screens read the status bar's
// height from. A scene made with the default constructor has a status bar
// manager whose frame is the main screen's width by 47 points; tests change the
// frame, or remove the manager, to mimic other devices.

#ifndef OBOLO_TOOLKIT_UI_WINDOW_SCENE_H_
#define OBOLO_TOOLKIT_UI_WINDOW_SCENE_H_

#include <memory>

#include "toolkit/geometry.h"
#include "toolkit/ns_object.h"

namespace obolo {

// Where the status bar sits on the scene's screen.
class UIStatusBarManager : public NSObject {
 public:
  static constexpr CGFloat kDefaultHeight = 47;  // points, a recent phone's

  // A status bar across the main screen's top, kDefaultHeight high.
  UIStatusBarManager();
  CGRect statusBarFrame() const { return status_bar_frame_; }
  void setStatusBarFrame(CGRect frame) { status_bar_frame_ = frame; }

 private:
  CGRect status_bar_frame_;
};

class UIWindowScene : public NSObject {
 public:
  // A scene with the default status bar.
  UIWindowScene() : status_bar_manager_(std::make_shared<UIStatusBarManager>()) {}

  // The scene's status bar; replaceable, for a screen of another shape.
  std::shared_ptr<UIStatusBarManager> statusBarManager() const { return status_bar_manager_; }
  void setStatusBarManager(std::shared_ptr<UIStatusBarManager> manager) {
    status_bar_manager_ = std::move(manager);
  }

 private:
  std::shared_ptr<UIStatusBarManager> status_bar_manager_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_WINDOW_SCENE_H_
