#include "toolkit/ui_window.h"

#include "toolkit/ui_application.h"
#include "toolkit/ui_screen.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {

UIWindow::UIWindow() : UIView(UIScreen::main().bounds()) { UIView::setHidden(true); }

UIWindow::UIWindow(std::shared_ptr<UIWindowScene> scene) : UIWindow() { scene_ = std::move(scene); }

UIWindow::~UIWindow() = default;

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller) {
  if (controller == root_view_controller_) return;
  if (root_view_controller_ && root_view_controller_->isViewLoaded()) {
    root_view_controller_->view()->removeFromSuperview();
  }
  root_view_controller_ = std::move(controller);
  if (!root_view_controller_) return;
  auto view = root_view_controller_->view();
  view->setFrame(bounds());
  view->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  insertSubview(view, 0);
  if (!isHidden()) {
    root_view_controller_->forwardAppearance(/*appearing=*/true, /*did=*/false, /*animated=*/false);
    root_view_controller_->forwardAppearance(/*appearing=*/true, /*did=*/true, /*animated=*/false);
  }
}

void UIWindow::setHidden(bool hidden) {
  const bool appearing = isHidden() && !hidden;
  UIView::setHidden(hidden);
  if (!hidden) UIApplication::shared().addWindow(selfAs(this));
  if (appearing && root_view_controller_) {
    root_view_controller_->forwardAppearance(/*appearing=*/true, /*did=*/false, /*animated=*/false);
    root_view_controller_->forwardAppearance(/*appearing=*/true, /*did=*/true, /*animated=*/false);
  }
}

void UIWindow::makeKeyAndVisible() {
  makeKey();
  setHidden(false);
}

void UIWindow::makeKey() { UIApplication::shared().makeKey(selfAs(this)); }

bool UIWindow::isKeyWindow() const { return UIApplication::shared().keyWindow().get() == this; }

}  // namespace obolo
