#include "toolkit/wk_web_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "platform/main_loop.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

struct Handler : WKScriptMessageHandler {
  std::vector<nlohmann::json> bodies;
  void userContentController(WKUserContentController&, const WKScriptMessage& message) override {
    EXPECT_TRUE(MainLoop::main().isMainThread());
    EXPECT_EQ(message.name(), "obHandler");
    bodies.push_back(message.body());
  }
};

class WKWebViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    configuration.userContentController->add(handler, "obHandler");
    web_view = std::make_shared<WKWebView>(CGRect(0, 91, 390, 844), configuration);
  }

  std::shared_ptr<Handler> handler = std::make_shared<Handler>();
  WKWebViewConfiguration configuration;
  std::shared_ptr<WKWebView> web_view;
};

TEST_F(WKWebViewTest, PageMessagesOfAnyShapeReachTheNamedHandlerOnALaterTurn) {
  const std::vector<nlohmann::json> bodies = {
      {{"device_key", "dk"}, {"login_key", "lk"}, {"extra", 1}}, "just a string", 42,
      nlohmann::json::array({1, "two"}), nullptr,
  };
  for (const auto& body : bodies) EXPECT_TRUE(web_view->postMessageFromPage("obHandler", body));
  EXPECT_FALSE(web_view->postMessageFromPage("otherHandler", "x")) << "the page has no such handler";
  EXPECT_FALSE(configuration.userContentController->add(std::make_shared<Handler>(), "obHandler"))
      << "one handler per name";
  EXPECT_TRUE(handler->bodies.empty()) << "delivery waits for the main loop";
  MainLoop::main().runFor(0s);
  EXPECT_EQ(handler->bodies, bodies);
}

TEST_F(WKWebViewTest, NothingIsDeliveredOnceTheHandlerOrTheWebViewIsGone) {
  web_view->postMessageFromPage("obHandler", "before removal");
  configuration.userContentController->removeScriptMessageHandler("obHandler");
  MainLoop::main().runFor(1s);
  EXPECT_FALSE(web_view->postMessageFromPage("obHandler", "after"));

  configuration.userContentController->add(handler, "obHandler");
  web_view->postMessageFromPage("obHandler", "late");
  web_view.reset();
  MainLoop::main().runFor(1s);
  EXPECT_TRUE(handler->bodies.empty());
}

}  // namespace
}  // namespace obolo
