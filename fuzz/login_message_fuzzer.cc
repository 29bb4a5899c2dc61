// Whatever the login page posts to "obHandler" reaches a presented login
// screen: any JSON value, or, for bytes that are not JSON, the bytes as a
// string. The screen never crashes, and only a dictionary holding
// "device_key" and "login_key" as texts closes it and calls back, once, with
// exactly those texts; anything else leaves it open until Done. The same body
// posted first by a frame inside the page and by a page of another origin is
// never heard. Either way the dismissed screen is released.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "login/web_login_vc.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_window.h"

namespace {

using nlohmann::json;

void Check(bool condition) {
  if (!condition) std::abort();
}

void Settle() { obolo::MainLoop::main().runFor(std::chrono::seconds(0)); }

// A key window whose root controller presents each input's screen; made once
// and kept for the whole run.
struct Stage {
  Stage() {
    obolo::MainLoop::main().useVirtualTime();
    obolo::SetLogSink(obolo::NullLogSink());
    window = std::make_shared<obolo::UIWindow>(std::make_shared<obolo::UIWindowScene>());
    host = std::make_shared<obolo::UIViewController>();
    window->setRootViewController(host);
    window->makeKeyAndVisible();
  }
  std::shared_ptr<obolo::UIWindow> window;
  std::shared_ptr<obolo::UIViewController> host;
};

// The two keys when the body is a valid login message.
bool ExpectedKeys(const json& body, std::string* deviceKey, std::string* loginKey) {
  if (!body.is_object()) return false;
  auto device = body.find("device_key");
  auto login = body.find("login_key");
  if (device == body.end() || login == body.end() || !device->is_string() || !login->is_string()) return false;
  *deviceKey = device->get<std::string>();
  *loginKey = login->get<std::string>();
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Stage& stage = *new Stage;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  json body = json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  if (body.is_discarded()) body = std::string(bytes);

  std::string deviceKey, loginKey;
  const bool valid = ExpectedKeys(body, &deviceKey, &loginKey);

  auto screen = std::make_shared<obolo::WebLoginVC>();
  std::weak_ptr<obolo::WebLoginVC> watch = screen;
  int calls = 0;
  screen->callback = [&](std::string device, std::string login) {
    ++calls;
    Check(device == deviceKey && login == loginKey);
    Check(stage.host->presentedViewController() == nullptr);
  };
  stage.host->present(screen, /*animated=*/true);
  Settle();
  obolo::WKFrameInfo subframe = screen->webview->mainFrame();
  subframe.isMainFrame = false;
  const obolo::WKFrameInfo elsewhere{true, {"https", "wallet.obolo.io.example", 0}};
  for (const auto& frame : {subframe, elsewhere}) {
    Check(screen->webview->postMessageFromPage("obHandler", body, frame));
    Settle();
    Check(calls == 0 && stage.host->presentedViewController() == screen);
  }
  Check(screen->webview->postMessageFromPage("obHandler", std::move(body)));
  Settle();

  if (valid) {
    Check(calls == 1);
  } else {
    Check(calls == 0);
    Check(stage.host->presentedViewController() == screen);
    auto done = std::dynamic_pointer_cast<obolo::UIButton>(screen->view()->viewWithTag(obolo::kWebLoginDoneButtonTag));
    Check(done && done->tap());
    Settle();
    Check(calls == 0);
  }
  Check(stage.host->presentedViewController() == nullptr);
  screen.reset();
  Check(watch.expired());
  return 0;
}
