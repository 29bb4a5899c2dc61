#include "toolkit/ui_view_controller.h"

#include <algorithm>
#include <utility>

#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_navigation_controller.h"
#include "toolkit/ui_screen.h"
#include "toolkit/ui_window.h"

namespace obolo {

UIViewController::UIViewController() = default;

UIViewController::~UIViewController() = default;

std::shared_ptr<UIView> UIViewController::view() {
  if (view_ || loading_view_) return view_;
  loading_view_ = true;
  loadView();
  if (!view_) UIViewController::loadView();  // an override that made no view
  viewDidLoad();
  loading_view_ = false;
  return view_;
}

void UIViewController::loadView() {
  auto view = std::make_shared<UIView>(UIScreen::main().bounds());
  view->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  view_ = std::move(view);
}

void UIViewController::addChild(const std::shared_ptr<UIViewController>& child) {
  if (!child || child.get() == this) return;
  for (auto ancestor = selfAs(this); ancestor; ancestor = ancestor->parent()) {
    if (ancestor == child) return;  // would make a cycle
  }
  if (child->parent().get() == this) return;
  child->removeFromParent();
  children_.push_back(child);
  child->parent_ = selfAs(this);
}

void UIViewController::removeFromParent() {
  auto parent = parent_.lock();
  parent_.reset();
  if (!parent) return;
  auto self = selfAs(this);  // alive until the parent's list no longer holds it
  auto& siblings = parent->children_;
  siblings.erase(
      std::remove_if(siblings.begin(), siblings.end(), [this](const auto& c) { return c.get() == this; }),
      siblings.end());
}

std::shared_ptr<UINavigationController> UIViewController::navigationController() const {
  for (auto ancestor = parent(); ancestor; ancestor = ancestor->parent()) {
    if (auto navigation = std::dynamic_pointer_cast<UINavigationController>(ancestor)) return navigation;
  }
  return nullptr;
}

std::shared_ptr<UIViewController> UIViewController::presentationHost() {
  auto host = selfAs(this);
  while (host) {
    auto parent = host->parent();
    if (!parent) break;
    host = parent;
  }
  return host;
}

std::shared_ptr<const UIViewController> UIViewController::presentationHost() const {
  return const_cast<UIViewController*>(this)->presentationHost();
}

std::shared_ptr<UIViewController> UIViewController::presentedViewController() const {
  auto host = presentationHost();
  return host ? host->presented_ : presented_;
}

std::shared_ptr<UIViewController> UIViewController::presentingViewController() const {
  auto host = presentationHost();
  return host ? host->presenting_.lock() : presenting_.lock();
}

void UIViewController::forwardAppearance(bool appearing, bool did, bool animated) {
  if (appearing) {
    did ? viewDidAppear(animated) : viewWillAppear(animated);
  } else {
    did ? viewDidDisappear(animated) : viewWillDisappear(animated);
  }
  const auto children = children_;
  for (const auto& child : children) child->forwardAppearance(appearing, did, animated);
}

void UIViewController::present(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) {
  auto host = presentationHost();
  if (!host || !controller) {
    LogLine("Attempt to present a view controller from one that is not owned by a shared_ptr");
    return;
  }
  if (host->presented_) {
    LogLine("Attempt to present a view controller on one which is already presenting");
    return;
  }
  if (controller == host || controller->presenting_.lock() || controller->parent()) {
    LogLine("Attempt to present a view controller that is already presented or contained");
    return;
  }

  host->presented_ = controller;
  controller->presenting_ = host;
  controller->being_presented_ = true;
  auto view = controller->view();
  if (auto window = host->isViewLoaded() ? host->view_->window() : nullptr) {
    view->setFrame(window->bounds());
    window->addSubview(view);
    controller->view_added_by_presentation_ = true;
  }
  controller->forwardAppearance(/*appearing=*/true, /*did=*/false, animated);

  MainLoop::main().post([controller, animated, completion = std::move(completion)] {
    controller->being_presented_ = false;
    controller->forwardAppearance(/*appearing=*/true, /*did=*/true, animated);
    if (completion) completion();
  });
}

void UIViewController::dismiss(bool animated, std::function<void()> completion) {
  auto host = presentationHost();
  if (!host) return;
  std::shared_ptr<UIViewController> presenter;
  std::shared_ptr<UIViewController> target;
  if (host->presented_) {
    presenter = host;
    target = host->presented_;
  } else if (auto presenting = host->presenting_.lock()) {
    presenter = presenting;
    target = host;
  } else {
    return;  // nothing presented here and not presented itself
  }
  if (target->being_dismissed_) return;

  // The target and everything presented above it go, topmost first.
  std::vector<std::shared_ptr<UIViewController>> stack;
  for (auto c = target; c; c = c->presented_) stack.insert(stack.begin(), c);
  for (const auto& c : stack) {
    c->being_dismissed_ = true;
    c->forwardAppearance(/*appearing=*/false, /*did=*/false, animated);
  }

  MainLoop::main().post([presenter, target, stack, animated, completion = std::move(completion)] {
    for (const auto& c : stack) {
      if (c->view_added_by_presentation_ && c->view_) c->view_->removeFromSuperview();
      c->view_added_by_presentation_ = false;
      c->presented_ = nullptr;
      c->presenting_.reset();
    }
    if (presenter->presented_ == target) presenter->presented_ = nullptr;
    for (const auto& c : stack) {
      c->being_dismissed_ = false;
      c->forwardAppearance(/*appearing=*/false, /*did=*/true, animated);
    }
    if (completion) completion();
  });
}

void UIViewController::performSegue(std::string_view identifier, std::any sender) {
  auto self = selfAs(this);
  std::optional<UIStoryboard::Segue> segue;
  if (storyboard_ && self) segue = storyboard_->segue(scene_identifier_, identifier);
  std::shared_ptr<UIViewController> destination;
  if (segue) destination = storyboard_->instantiateViewController(segue->destination);
  if (!destination) {
    LogLine("Receiver has no segue with identifier '" + std::string(identifier) + "'");
    return;
  }
  if (segue->presentationStyle) destination->setModalPresentationStyle(*segue->presentationStyle);
  const UIStoryboardSegue performed(std::string(identifier), self, destination);
  prepare(performed, sender);
  present(destination, /*animated=*/true);
}

}  // namespace obolo
