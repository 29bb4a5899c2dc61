// The application object: opening links outside the kit, and the windows.
//
// There is no other application to hand a link to, so open() records the
// address (tests read openedURLs()) and reports success. The application lists
// the windows that were made visible, in that order, without keeping them: as
// on a phone, the host owns its windows, and a released one leaves the list.
// At most one is the key window. Main thread only.

#ifndef OBOLO_TOOLKIT_UI_APPLICATION_H_
#define OBOLO_TOOLKIT_UI_APPLICATION_H_

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/url.h"

namespace obolo {

class UIWindow;

class UIApplication {
 public:
  // Options of open(), keyed as on the platform; the kit passes none.
  using OpenOptions = std::map<std::string, std::any>;

  // The one application object.
  static UIApplication& shared();

  // Records `url`; `completion`, when given, runs with true on a later turn of
  // the main loop, as the platform calls it back.
  void open(const URL& url, const OpenOptions& options = {},
            std::function<void(bool success)> completion = nullptr);
  const std::vector<URL>& openedURLs() const { return opened_urls_; }

  // The windows made visible and still alive, oldest first.
  std::vector<std::shared_ptr<UIWindow>> windows() const;
  // The key window, or null.
  std::shared_ptr<UIWindow> keyWindow() const { return key_window_.lock(); }

 private:
  friend class UIWindow;
  UIApplication() = default;
  void addWindow(const std::shared_ptr<UIWindow>& window);
  void makeKey(const std::shared_ptr<UIWindow>& window);

  std::vector<URL> opened_urls_;
  std::vector<std::weak_ptr<UIWindow>> windows_;
  std::weak_ptr<UIWindow> key_window_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_APPLICATION_H_
