// A message a web page posted to one of the native handlers registered with
// its content controller (window.webkit.messageHandlers.<name>.postMessage).
//
// The body is whatever the page posted, as JSON: an object (a dictionary from
// text keys to values), a string, a number, a boolean, an array or null. The
// frame info tells which frame posted it and that frame's origin: the page
// decides the body, but not where it is said to come from.

#ifndef OBOLO_TOOLKIT_WK_SCRIPT_MESSAGE_H_
#define OBOLO_TOOLKIT_WK_SCRIPT_MESSAGE_H_

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "toolkit/wk_frame_info.h"

namespace obolo {

class WKWebView;

class WKScriptMessage {
 public:
  // A message as the web view delivers it, with the frame that posted it.
  WKScriptMessage(std::string name, nlohmann::json body, std::weak_ptr<WKWebView> web_view, WKFrameInfo frame_info)
      : name_(std::move(name)),
        body_(std::move(body)),
        web_view_(std::move(web_view)),
        frame_info_(std::move(frame_info)) {}

  // The name of the handler the page posted to.
  const std::string& name() const { return name_; }
  // What the page posted, as JSON; and the web view it came from (null once gone).
  const nlohmann::json& body() const { return body_; }
  std::shared_ptr<WKWebView> webView() const { return web_view_.lock(); }
  // The frame that posted the message.
  const WKFrameInfo& frameInfo() const { return frame_info_; }

 private:
  std::string name_;
  nlohmann::json body_;
  std::weak_ptr<WKWebView> web_view_;
  WKFrameInfo frame_info_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_WK_SCRIPT_MESSAGE_H_
