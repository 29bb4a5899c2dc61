#include "login/web_login_vc.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/log.h"
#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_application.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_screen.h"
#include "toolkit/ui_window.h"
#include "toolkit/ui_window_scene.h"
#include "toolkit/url.h"
#include "toolkit/url_request.h"
#include "toolkit/wk_frame_info.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

// The production address for the given id texts, spelled out in full.
std::string ProductionAddress(const std::string& publisherId, const std::string& bidId) {
  return "https://wallet.obolo.io/?login_source=ios_paywall&login_publisher_id=" + publisherId +
         "&login_publisher_logo_url=https://wallet.obolo.io/assets/publisher-logo.png"
         "&login_publisher_bid_id=" +
         bidId + "&login_redirect_url=https://app.obolo.io/window-mode/index.html";
}

// What the opener's callback saw.
struct Call {
  std::string deviceKey;
  std::string loginKey;
  bool stillPresented;  // the host still presented the screen at the call
};

class WebLoginTest : public ::testing::Test {
 protected:
  void SetUp() override { MainLoop::main().useVirtualTime(); }

  // A window showing `host`, in a scene whose status bar is `statusBarHeight`
  // high; key unless told otherwise.
  void ShowHost(double statusBarHeight = 47, bool key = true) {
    scene = std::make_shared<UIWindowScene>();
    scene->statusBarManager()->setStatusBarFrame(CGRect(0, 0, UIScreen::main().bounds().width(), statusBarHeight));
    window = std::make_shared<UIWindow>(scene);
    host = std::make_shared<UIViewController>();
    window->setRootViewController(host);
    key ? window->makeKeyAndVisible() : window->setHidden(false);
  }

  // A login screen prepared as the paywall prepares it, presented by the host.
  std::shared_ptr<WebLoginVC> PresentLogin(std::int64_t publisherId = 12, std::int64_t bidId = 345,
                                           bool withCallback = true) {
    auto screen = std::make_shared<WebLoginVC>();
    screen->publisherId = publisherId;
    screen->obBidId = bidId;
    if (withCallback) {
      screen->callback = [this](std::string deviceKey, std::string loginKey) {
        calls.push_back({std::move(deviceKey), std::move(loginKey), host->presentedViewController() != nullptr});
      };
    }
    host->present(screen, /*animated=*/true);
    Settle();
    return screen;
  }

  static void Settle() { MainLoop::main().runFor(0s); }

  static std::shared_ptr<UIButton> DoneButton(WebLoginVC& screen) {
    return std::dynamic_pointer_cast<UIButton>(screen.view()->viewWithTag(kWebLoginDoneButtonTag));
  }

  // The credential lines written since the capture began or was cleared.
  std::vector<std::string> CredentialLines() const {
    std::vector<std::string> lines;
    for (const auto& entry : log.entries()) {
      if (entry.content == LogContent::kCredential) lines.push_back(entry.text);
    }
    return lines;
  }

  testing::LogCapture log;
  std::shared_ptr<UIWindowScene> scene;
  std::shared_ptr<UIWindow> window;
  std::shared_ptr<UIViewController> host;
  std::vector<Call> calls;
};

TEST_F(WebLoginTest, ThePageIsLoadedWithAPlainGetAndItsAddressIsWritten) {
  // The five parameters in order, the ids in decimal; ids the opener never
  // set are 0.
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  const struct {
    std::int64_t publisherId, bidId;
    const char *publisherText, *bidText;
  } cases[] = {
      {-12, -345, "-12", "-345"},
      {kMax, kMin, "9223372036854775807", "-9223372036854775808"},
  };
  for (const auto& c : cases) {
    WebLoginVC screen;
    screen.publisherId = c.publisherId;
    screen.obBidId = c.bidId;
    EXPECT_EQ(screen.loginAddress(), ProductionAddress(c.publisherText, c.bidText)) << c.publisherText;
  }
  EXPECT_EQ(WebLoginVC().loginAddress(), ProductionAddress("0", "0"));

  ShowHost();
  auto screen = PresentLogin(12, 345);
  ASSERT_EQ(screen->webview->loadedRequests().size(), 1u);
  const URLRequest& request = screen->webview->loadedRequests().front();
  EXPECT_EQ(request.url().absoluteString(), ProductionAddress("12", "345"));
  EXPECT_EQ(request.httpMethod(), "GET");
  EXPECT_EQ(request.cachePolicy(), URLRequest::CachePolicy::useProtocolCachePolicy);
  EXPECT_EQ(request.timeoutInterval(), 60.0);
  EXPECT_TRUE(request.allHTTPHeaderFields().empty());
  EXPECT_TRUE(request.httpBody().empty());

  const auto& configuration = screen->webview->configuration();
  EXPECT_TRUE(configuration.defaultWebpagePreferences.allowsContentJavaScript);
  EXPECT_EQ(configuration.userContentController->handler("obHandler"),
            std::static_pointer_cast<WKScriptMessageHandler>(screen));

  const auto entries = log.entries();
  const int at = log.indexOf(ProductionAddress("12", "345"));
  ASSERT_GE(at, 0) << "the address is written as one line";
  EXPECT_EQ(entries[at].content, LogContent::kDiagnostic);
}

TEST_F(WebLoginTest, WebViewStartsBelowStatusBarAndBarKeepingTheViewsFullHeight) {
  UIScreen::main().setBounds(CGRect(0, 0, 320, 568));
  // The status bar counts only on the key window's scene; every missing link
  // counts as no status bar.
  struct Step {
    const char* what;
    std::function<void()> arrange;
    double expectedY;
  };
  const Step steps[] = {
      {"no key window", [&] { ShowHost(20, /*key=*/false); }, 44},
      {"key window with a 20-point status bar", [&] { window->makeKey(); }, 64},
      {"status bar of another height", [&] { scene->statusBarManager()->setStatusBarFrame(CGRect(0, 0, 320, 54)); },
       98},
      {"key window without a status bar manager", [&] { scene->setStatusBarManager(nullptr); }, 44},
      {"key window without a scene", [&] { window->setWindowScene(nullptr); }, 44},
  };
  for (const auto& step : steps) {
    step.arrange();
    auto screen = PresentLogin();
    EXPECT_EQ(screen->webview->frame(), CGRect(0, step.expectedY, 320, 568)) << step.what;

    auto done = DoneButton(*screen);
    ASSERT_NE(done, nullptr) << step.what;
    EXPECT_EQ(done->currentTitle(), "Done");
    EXPECT_TRUE(done->isVisibleOnScreen()) << step.what;
    EXPECT_LE(done->frame().maxY(), step.expectedY) << "Done sits above the page: " << step.what;
    EXPECT_GE(done->frame().minY(), step.expectedY - 44) << "Done sits below the status bar: " << step.what;

    ASSERT_TRUE(done->tap());
    Settle();
    ASSERT_EQ(host->presentedViewController(), nullptr);
  }
  UIScreen::main().setBounds(CGRect(0, 0, 390, 844));
}

TEST_F(WebLoginTest, MessageWithBothKeysClosesTheScreenThenCallsBackOnceDeviceKeyFirst) {
  ShowHost();
  auto screen = PresentLogin();
  const json body = {{"device_key", "dk-1"},
                     {"login_key", "lk-2"},
                     {"email", "reader@example.com"},
                     {"nested", {{"device_key", "not this one"}}}};
  ASSERT_TRUE(screen->webview->postMessageFromPage("obHandler", body));

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return screen->isBeingDismissed(); }, 1s));
  EXPECT_TRUE(calls.empty()) << "the callback waits for the dismissal to complete";

  Settle();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].deviceKey, "dk-1");
  EXPECT_EQ(calls[0].loginKey, "lk-2");
  EXPECT_FALSE(calls[0].stillPresented) << "called after the screen has gone";
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(screen->view()->window(), nullptr) << "the screen no longer covers the window";
  EXPECT_EQ(CredentialLines(), std::vector<std::string>{body.dump()}) << "the body is one credential line";

  MainLoop::main().advance(10s);
  EXPECT_EQ(calls.size(), 1u);
}

// Nesting deep enough to overflow the stack of a recursive JSON writer, built
// and handed on by moves only (a copy would recurse too).
json DeepBody() {
  json deep = {{"bottom", true}};
  for (int i = 0; i < 300000; ++i) deep = i % 2 ? json::array({std::move(deep)}) : json{{"k", std::move(deep)}};
  return deep;
}

// What the screen does with bodies is covered with the paywall by the login
// fault matrix; here, what reaches the log of them.
TEST_F(WebLoginTest, MessagesWithoutBothKeysAsTextsAreWrittenOutAndIgnored) {
  ShowHost();
  auto screen = PresentLogin();
  // Posts a body and returns the credential lines it wrote.
  auto post = [&](json body) {
    log.clear();
    EXPECT_TRUE(screen->webview->postMessageFromPage("obHandler", std::move(body)));
    Settle();
    EXPECT_EQ(host->presentedViewController(), screen) << "still open";
    EXPECT_FALSE(screen->isBeingDismissed());
    return CredentialLines();
  };
  // Each is written out as the compact JSON it was, one credential line.
  const json bodies[] = {
      {{"device_key", "dk"}},
      {{"device_key", "dk"}, {"login_key", 42}},
      {{"device_key", nullptr}, {"login_key", "lk"}},
      {{"device_key", json::array({"dk"})}, {"login_key", "lk"}},
      {{"Device_Key", "dk"}, {"LOGIN_KEY", "lk"}},
      json::parse(R"({"a":[1,2.5,{"b":null,"c":[]}],"d":{},"e":"tab\tquote\"","f":true})"),
      json::parse(R"([[],[[]],{"x":[{"y":{"z":-3}}]}])"),
      nullptr,
      "device_key=dk&login_key=lk",
      -1.5,
      false,
  };
  for (const auto& body : bodies) {
    SCOPED_TRACE(body.dump());
    EXPECT_EQ(post(body), std::vector<std::string>{body.dump()});
  }

  // Hostile bodies are still one line each.
  json deepKey = {{"login_key", "lk"}};
  deepKey["device_key"] = DeepBody();
  std::vector<std::vector<std::string>> written;
  written.push_back(post("\xff\xfe not UTF-8 \xc3"));
  written.push_back(post({{"device_key", "\xc3\x28"}, {"junk", "\xed\xa0\x80"}}));
  written.push_back(post(std::move(deepKey)));
  for (const auto& lines : written) {
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].find('\n'), std::string::npos) << "one line, whatever the body";
  }
  EXPECT_NE(written[0][0].find("\xef\xbf\xbd"), std::string::npos)
      << "bytes that are not UTF-8 are written as replacement characters";
  EXPECT_TRUE(calls.empty());

  // Still listening: the page can try again, and is heard once if it posts twice.
  screen->webview->postMessageFromPage("obHandler", {{"device_key", "dk-1"}, {"login_key", "lk-1"}});
  screen->webview->postMessageFromPage("obHandler", {{"device_key", "dk-2"}, {"login_key", "lk-2"}});
  Settle();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].deviceKey, "dk-1");
  EXPECT_EQ(calls[0].loginKey, "lk-1");
}

// However it closes, the screen stops listening and is released once its
// presenter lets go. Done wins over a message the page sends just before it;
// a valid message closes the screen even without a callback.
TEST_F(WebLoginTest, ClosedScreenNeverCallsBackStopsListeningAndIsReleased) {
  const struct {
    const char* how;
    bool withCallback;
    std::function<void(WebLoginVC&)> close;
  } ways[] = {
      {"Done just after a valid message", true,
       [](WebLoginVC& s) {
         s.webview->postMessageFromPage("obHandler", {{"device_key", "dk"}, {"login_key", "lk"}});
         ASSERT_TRUE(DoneButton(s)->tap());
       }},
      {"valid message without a callback", false,
       [](WebLoginVC& s) { s.webview->postMessageFromPage("obHandler", {{"device_key", "dk"}, {"login_key", "lk"}}); }},
      {"presenter dismisses", true, [this](WebLoginVC&) { host->dismiss(/*animated=*/false); }},
  };
  ShowHost();
  for (const auto& way : ways) {
    SCOPED_TRACE(way.how);
    auto screen = PresentLogin(12, 345, way.withCallback);
    std::weak_ptr<WebLoginVC> watch = screen;
    auto contentController = screen->webview->configuration().userContentController;
    ASSERT_NE(contentController->handler("obHandler"), nullptr);

    way.close(*screen);
    Settle();
    ASSERT_EQ(host->presentedViewController(), nullptr);
    EXPECT_EQ(screen->view()->window(), nullptr);
    EXPECT_EQ(contentController->handler("obHandler"), nullptr);
    EXPECT_FALSE(screen->webview->postMessageFromPage("obHandler", {{"device_key", "dk"}, {"login_key", "lk"}}))
        << "a closed screen no longer listens";
    MainLoop::main().advance(10s);
    EXPECT_TRUE(calls.empty());
    screen.reset();
    EXPECT_TRUE(watch.expired()) << "leaked";
  }
}

// Only the login page may hand over keys: the main frame of a page from the
// wallet site or from the service's web origin, where the page sends the
// reader back. A message from any other frame or page is written out with
// where it came from and ignored, the screen left open.
TEST_F(WebLoginTest, OnlyTheMainFrameOfTheLoginPagesOriginsIsHeard) {
  const json keys = {{"device_key", "dk"}, {"login_key", "lk"}};
  auto frame = [](bool main, std::string protocol, std::string host, int port) {
    return std::optional<WKFrameInfo>(WKFrameInfo{main, {std::move(protocol), std::move(host), port}});
  };
  const struct {
    const char* what;
    std::optional<WKFrameInfo> frame;  // none: the main frame of the page shown
    const char* navigatedTo;           // where the page went first, if anywhere
    const char* ignoredAs;             // the frame as the ignoring line names it; none when heard
  } cases[] = {
      {"the login page as loaded", std::nullopt, nullptr, nullptr},
      {"the wallet site, its port written out", frame(true, "https", "wallet.obolo.io", 443), nullptr, nullptr},
      {"the wallet site in capitals", frame(true, "HTTPS", "Wallet.Obolo.io", 0), nullptr, nullptr},
      {"the redirect page the login ends on", std::nullopt, "https://app.obolo.io/window-mode/index.html", nullptr},
      {"a frame inside the login page", frame(false, "https", "wallet.obolo.io", 0), nullptr,
       "a subframe of https://wallet.obolo.io"},
      {"another site", frame(true, "https", "evil.example", 0), nullptr, "the main frame of https://evil.example"},
      {"the wallet's host over plain http", frame(true, "http", "wallet.obolo.io", 0), nullptr,
       "the main frame of http://wallet.obolo.io"},
      {"the wallet's host on another port", frame(true, "https", "wallet.obolo.io", 8443), nullptr,
       "the main frame of https://wallet.obolo.io:8443"},
      {"a look-alike host", frame(true, "https", "wallet.obolo.io.evil.example", 0), nullptr,
       "the main frame of https://wallet.obolo.io.evil.example"},
      {"a page with no origin", frame(true, "", "", 0), nullptr, "the main frame of an opaque origin"},
      {"a page the login page navigated to", std::nullopt, "https://evil.example/phish?next=wallet",
       "the main frame of https://evil.example"},
  };
  ShowHost();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    calls.clear();
    auto screen = PresentLogin();
    if (c.navigatedTo != nullptr) screen->webview->load(URLRequest(*URL::fromString(c.navigatedTo)));
    log.clear();
    ASSERT_TRUE(screen->webview->postMessageFromPage("obHandler", keys, c.frame));
    Settle();
    EXPECT_EQ(log.contains(keys.dump()), true) << "the body is written out either way";
    if (c.ignoredAs == nullptr) {
      ASSERT_EQ(calls.size(), 1u);
      EXPECT_EQ(calls[0].deviceKey, "dk");
      EXPECT_EQ(host->presentedViewController(), nullptr);
      continue;
    }
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(host->presentedViewController(), screen) << "still open";
    EXPECT_TRUE(log.contains(std::string("Login message ignored: it came from ") + c.ignoredAs +
                             ", not the login page"));
    // The page that belongs there is still heard.
    ASSERT_TRUE(screen->webview->postMessageFromPage("obHandler", keys, frame(true, "https", "wallet.obolo.io", 0)));
    Settle();
    EXPECT_EQ(calls.size(), 1u);
    EXPECT_EQ(host->presentedViewController(), nullptr);
  }
}

}  // namespace
}  // namespace obolo
