// A window: the root of a view tree on screen.
//
// A window starts hidden and off the application's list, as on the platform;
// makeKeyAndVisible() shows it, lists it with UIApplication::shared() (which
// then keeps it) and makes it the one key window. Its root view controller's
// view fills it. A window belongs to a scene when made with one (the scene
// carries the status bar). Main thread only.

#ifndef OBOLO_TOOLKIT_UI_WINDOW_H_
#define OBOLO_TOOLKIT_UI_WINDOW_H_

#include <memory>

#include "toolkit/ui_view.h"
#include "toolkit/ui_window_scene.h"

namespace obolo {

class UIViewController;

class UIWindow : public UIView {
 public:
  // A window the size of the main screen, in no scene.
  UIWindow();
  // A window the size of the main screen in `scene` (kept strongly).
  explicit UIWindow(std::shared_ptr<UIWindowScene> scene);
  ~UIWindow() override;

  // The scene the window belongs to, if any.
  std::shared_ptr<UIWindowScene> windowScene() const { return scene_; }
  void setWindowScene(std::shared_ptr<UIWindowScene> scene) { scene_ = std::move(scene); }

  // The screen the window shows; null until set.
  std::shared_ptr<UIViewController> rootViewController() const { return root_view_controller_; }
  // Replaces the root: the old root's view leaves the window, the new one's
  // view (loaded now) fills it. A visible window tells the new root it appears.
  void setRootViewController(std::shared_ptr<UIViewController> controller);

  // Shows the window and makes it the application's key window (the one that
  // presents alerts and takes taps); makeKey() only the latter.
  void makeKeyAndVisible();
  void makeKey();
  bool isKeyWindow() const;

  void setHidden(bool hidden) override;

 private:
  std::shared_ptr<UIWindowScene> scene_;
  std::shared_ptr<UIViewController> root_view_controller_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_WINDOW_H_
