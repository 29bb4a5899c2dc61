#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/wk_web_view.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

struct Handler : WKScriptMessageHandler {
  std::vector<nlohmann::json> bodies;
  std::vector<std::string> names;
  void userContentController(WKUserContentController&, const WKScriptMessage& message) override {
    EXPECT_TRUE(MainLoop::main().isMainThread());
    names.push_back(message.name());
    bodies.push_back(message.body());
  }
};

struct Screen : WKNavigationDelegate, WKUIDelegate {};

class WKWebViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    configuration.defaultWebpagePreferences.allowsContentJavaScript = true;
    configuration.userContentController->add(handler, "obHandler");
    web_view = std::make_shared<WKWebView>(CGRect(0, 91, 390, 844), configuration);
  }

  std::shared_ptr<Handler> handler = std::make_shared<Handler>();
  WKWebViewConfiguration configuration;
  std::shared_ptr<WKWebView> web_view;
};

TEST_F(WKWebViewTest, LoadRecordsTheRequestAsGiven) {
  EXPECT_FALSE(web_view->lastRequest().has_value());
  web_view->load(URLRequest(*URL::fromString("https://wallet.obolo.io/?login_source=ios_paywall")));
  auto request = web_view->lastRequest();
  ASSERT_TRUE(request.has_value());
  EXPECT_EQ(request->url().absoluteString(), "https://wallet.obolo.io/?login_source=ios_paywall");
  EXPECT_EQ(request->httpMethod(), "GET");
  EXPECT_EQ(request->cachePolicy(), URLRequest::CachePolicy::useProtocolCachePolicy);
  EXPECT_EQ(request->timeoutInterval(), 60.0);
  EXPECT_TRUE(request->allHTTPHeaderFields().empty());
  EXPECT_EQ(web_view->url(), request->url());
  EXPECT_TRUE(web_view->configuration().defaultWebpagePreferences.allowsContentJavaScript);
}

TEST_F(WKWebViewTest, PageMessagesOfAnyShapeReachTheNamedHandlerOnALaterTurn) {
  const nlohmann::json bodies[] = {
      {{"device_key", "dk"}, {"login_key", "lk"}, {"extra", 1}},
      "just a string",
      42,
      nlohmann::json::array({1, "two"}),
      nullptr,
  };
  for (const auto& body : bodies) EXPECT_TRUE(web_view->postMessageFromPage("obHandler", body));
  EXPECT_FALSE(web_view->postMessageFromPage("otherHandler", "x")) << "the page has no such handler";
  EXPECT_TRUE(handler->bodies.empty()) << "delivery waits for the main loop";

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return handler->bodies.size() == 5; }, 1s));
  EXPECT_EQ(handler->bodies[0]["device_key"], "dk");
  EXPECT_TRUE(handler->bodies[1].is_string());
  EXPECT_EQ(handler->bodies[2], 42);
  EXPECT_TRUE(handler->bodies[3].is_array());
  EXPECT_TRUE(handler->bodies[4].is_null());
  EXPECT_EQ(handler->names[0], "obHandler");
}

TEST_F(WKWebViewTest, RemovedHandlerReceivesNothingEvenForMessagesAlreadyPosted) {
  web_view->postMessageFromPage("obHandler", "before removal");
  web_view->configuration().userContentController->removeScriptMessageHandler("obHandler");
  MainLoop::main().runFor(1s);
  EXPECT_TRUE(handler->bodies.empty());
  EXPECT_FALSE(web_view->postMessageFromPage("obHandler", "after"));
}

TEST_F(WKWebViewTest, ContentControllerHoldsHandlersStronglyAndRefusesASecondForOneName) {
  std::weak_ptr<Handler> watch = handler;
  handler.reset();
  EXPECT_FALSE(watch.expired());
  EXPECT_FALSE(configuration.userContentController->add(std::make_shared<Handler>(), "obHandler"));
  EXPECT_EQ(configuration.userContentController->handler("obHandler"), watch.lock());
  configuration.userContentController->removeScriptMessageHandler("obHandler");
  EXPECT_TRUE(watch.expired());
}

TEST_F(WKWebViewTest, DelegatesAreHeldWeakly) {
  auto screen = std::make_shared<Screen>();
  web_view->setNavigationDelegate(screen);
  web_view->setUIDelegate(screen);
  EXPECT_EQ(web_view->navigationDelegate(), screen);
  std::weak_ptr<Screen> watch = screen;
  screen.reset();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(web_view->uiDelegate(), nullptr);
}

TEST_F(WKWebViewTest, AMessageToAWebViewThatIsGoneIsDropped) {
  web_view->postMessageFromPage("obHandler", "late");
  web_view.reset();
  MainLoop::main().runFor(1s);
  EXPECT_TRUE(handler->bodies.empty());
}

}  // namespace
}  // namespace obolo
