// A minimal navigation controller: a stack of screens under a bar.
//
// The screens of the stack are its children; the top one's view fills the
// space below the 44-point navigation bar. Screens ask navigationController()
// for it, and for the bar's height. Pushing and popping happen at once (no
// transition). Main thread only.

#ifndef OBOLO_TOOLKIT_UI_NAVIGATION_CONTROLLER_H_
#define OBOLO_TOOLKIT_UI_NAVIGATION_CONTROLLER_H_

#include <memory>
#include <vector>

#include "toolkit/ui_view_controller.h"

namespace obolo {

// The bar at the top of a navigation controller's screens.
class UINavigationBar : public UIView {
 public:
  static constexpr CGFloat kHeight = 44;  // points, the platform's
  // The constructors of UIView.
  using UIView::UIView;
};

class UINavigationController : public UIViewController {
 public:
  // An empty stack; push the root with pushViewController.
  UINavigationController() = default;

  // Builds a navigation controller with `root` at the bottom of its stack.
  static std::shared_ptr<UINavigationController> withRootViewController(
      const std::shared_ptr<UIViewController>& root);

  // The bar, made with the controller's view.
  std::shared_ptr<UINavigationBar> navigationBar();
  // The stack, bottom first; its top; pushing a screen on top, and popping the
  // top one (none when only the root is left). Animation is not simulated.
  std::vector<std::shared_ptr<UIViewController>> viewControllers() const { return children(); }
  std::shared_ptr<UIViewController> topViewController() const;
  void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
  std::shared_ptr<UIViewController> popViewController(bool animated);

  void loadView() override;

 private:
  void showTop();

  std::shared_ptr<UINavigationBar> bar_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_NAVIGATION_CONTROLLER_H_
