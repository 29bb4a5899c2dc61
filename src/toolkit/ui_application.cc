#include "toolkit/ui_application.h"

#include <algorithm>

#include "platform/main_loop.h"
#include "toolkit/ui_window.h"

namespace obolo {

UIApplication& UIApplication::shared() {
  static UIApplication* const application = new UIApplication();
  return *application;
}

void UIApplication::open(const URL& url, const OpenOptions&, std::function<void(bool)> completion) {
  opened_urls_.push_back(url);
  if (completion) MainLoop::main().post([completion = std::move(completion)] { completion(true); });
}

std::vector<std::shared_ptr<UIWindow>> UIApplication::windows() const {
  std::vector<std::shared_ptr<UIWindow>> live;
  for (const auto& window : windows_) {
    if (auto strong = window.lock()) live.push_back(std::move(strong));
  }
  return live;
}

void UIApplication::addWindow(const std::shared_ptr<UIWindow>& window) {
  if (!window) return;
  std::erase_if(windows_, [](const std::weak_ptr<UIWindow>& listed) { return listed.expired(); });
  const bool listed = std::any_of(windows_.begin(), windows_.end(),
                                  [&](const std::weak_ptr<UIWindow>& other) { return other.lock() == window; });
  if (!listed) windows_.push_back(window);
}

void UIApplication::makeKey(const std::shared_ptr<UIWindow>& window) {
  addWindow(window);
  key_window_ = window;
}

}  // namespace obolo
