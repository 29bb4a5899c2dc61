#include "toolkit/wk_web_view.h"

#include <utility>

#include "platform/main_loop.h"

namespace obolo {

WKWebView::WKWebView(CGRect frame, WKWebViewConfiguration configuration)
    : UIView(frame), configuration_(std::move(configuration)) {
  if (!configuration_.userContentController) {
    configuration_.userContentController = std::make_shared<WKUserContentController>();
  }
}

void WKWebView::load(const URLRequest& request) { requests_.push_back(request); }

std::optional<URLRequest> WKWebView::lastRequest() const {
  if (requests_.empty()) return std::nullopt;
  return requests_.back();
}

std::optional<URL> WKWebView::url() const {
  if (requests_.empty()) return std::nullopt;
  return requests_.back().url();
}

WKFrameInfo WKWebView::mainFrame() const {
  WKFrameInfo frame;
  frame.isMainFrame = true;
  if (auto loaded = url()) frame.securityOrigin = WKSecurityOrigin::of(*loaded);
  return frame;
}

bool WKWebView::postMessageFromPage(const std::string& name, nlohmann::json body,
                                    std::optional<WKFrameInfo> frame) {
  if (!configuration_.userContentController->handler(name)) return false;
  std::weak_ptr<WKWebView> weak = selfAs(this);
  MainLoop::main().post([weak, name, body = std::move(body), frame = frame.value_or(mainFrame())]() mutable {
    auto web_view = weak.lock();
    if (!web_view) return;
    auto controller = web_view->configuration_.userContentController;
    auto handler = controller->handler(name);
    if (!handler) return;
    const WKScriptMessage message(name, std::move(body), weak, std::move(frame));
    handler->userContentController(*controller, message);
  });
  return true;
}

}  // namespace obolo
