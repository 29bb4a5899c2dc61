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

void UIApplication::addWindow(const std::shared_ptr<UIWindow>& window) {
  if (window && std::find(windows_.begin(), windows_.end(), window) == windows_.end()) {
    windows_.push_back(window);
  }
}

void UIApplication::makeKey(const std::shared_ptr<UIWindow>& window) {
  addWindow(window);
  key_window_ = window;
}

}  // namespace obolo
