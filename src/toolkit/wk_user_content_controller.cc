#include "toolkit/wk_user_content_controller.h"

#include <algorithm>

namespace obolo {

bool WKUserContentController::add(std::shared_ptr<WKScriptMessageHandler> handler, std::string name) {
  if (!handler || this->handler(name)) return false;
  handlers_.emplace_back(std::move(name), std::move(handler));
  return true;
}

void WKUserContentController::removeScriptMessageHandler(std::string_view name) {
  std::erase_if(handlers_, [name](const auto& entry) { return entry.first == name; });
}

std::shared_ptr<WKScriptMessageHandler> WKUserContentController::handler(std::string_view name) const {
  for (const auto& [entry_name, handler] : handlers_) {
    if (entry_name == name) return handler;
  }
  return nullptr;
}

}  // namespace obolo
