#include "toolkit/ui_navigation_controller.h"

namespace obolo {

std::shared_ptr<UINavigationController> UINavigationController::withRootViewController(
    const std::shared_ptr<UIViewController>& root) {
  auto navigation = std::make_shared<UINavigationController>();
  navigation->pushViewController(root, /*animated=*/false);
  return navigation;
}

std::shared_ptr<UINavigationBar> UINavigationController::navigationBar() {
  if (!bar_) {
    const CGFloat width = isViewLoaded() ? view()->bounds().width() : 0;
    bar_ = std::make_shared<UINavigationBar>(CGRect(0, 0, width, UINavigationBar::kHeight));
    bar_->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  }
  return bar_;
}

std::shared_ptr<UIViewController> UINavigationController::topViewController() const {
  return children().empty() ? nullptr : children().back();
}

void UINavigationController::pushViewController(const std::shared_ptr<UIViewController>& controller, bool) {
  if (!controller) return;
  addChild(controller);
  if (isViewLoaded()) showTop();
}

std::shared_ptr<UIViewController> UINavigationController::popViewController(bool) {
  if (children().size() < 2) return nullptr;
  auto top = topViewController();
  if (top->isViewLoaded()) top->view()->removeFromSuperview();
  top->removeFromParent();
  if (isViewLoaded()) showTop();
  return top;
}

void UINavigationController::loadView() {
  UIViewController::loadView();
  auto bar = navigationBar();
  bar->setFrame(CGRect(0, 0, view()->bounds().width(), UINavigationBar::kHeight));
  view()->addSubview(bar);
  showTop();
}

void UINavigationController::showTop() {
  auto top = topViewController();
  if (!top) return;
  auto container = view();
  for (const auto& child : children()) {
    if (child != top && child->isViewLoaded()) child->view()->removeFromSuperview();
  }
  auto content = top->view();
  const CGRect bounds = container->bounds();
  content->setFrame(
      CGRect(0, UINavigationBar::kHeight, bounds.width(), bounds.height() - UINavigationBar::kHeight));
  content->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  container->insertSubviewBelow(content, navigationBar());
}

}  // namespace obolo
