// The native side of a web page's script bridge: handlers by name.
//
// The content controller holds its handlers strongly, as the platform does; a
// screen that registers itself removes itself when it is done, or the web
// view, its configuration and the screen keep each other alive. Main thread
// only.

#ifndef OBOLO_TOOLKIT_WK_USER_CONTENT_CONTROLLER_H_
#define OBOLO_TOOLKIT_WK_USER_CONTENT_CONTROLLER_H_

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/ns_object.h"
#include "toolkit/wk_script_message.h"

namespace obolo {

class WKUserContentController;

// Receives the messages a page posts to the name it was registered under.
class WKScriptMessageHandler {
 public:
  virtual ~WKScriptMessageHandler() = default;
  // A page posted `message` to the name this handler is registered under; on
  // the main loop.
  virtual void userContentController(WKUserContentController& controller, const WKScriptMessage& message) = 0;
};

class WKUserContentController : public NSObject {
 public:
  // Registers `handler` under `name`. A name already taken keeps its handler
  // (the platform refuses a second one) and false is returned.
  bool add(std::shared_ptr<WKScriptMessageHandler> handler, std::string name);
  // Drops the handler of `name`, or every handler.
  void removeScriptMessageHandler(std::string_view name);
  void removeAllScriptMessageHandlers() { handlers_.clear(); }

  // The handler registered under `name`; null when none is.
  std::shared_ptr<WKScriptMessageHandler> handler(std::string_view name) const;

 private:
  std::vector<std::pair<std::string, std::shared_ptr<WKScriptMessageHandler>>> handlers_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_WK_USER_CONTENT_CONTROLLER_H_
