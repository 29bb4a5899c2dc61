#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "platform/main_loop.h"
#include "toolkit/ui_application.h"
#include "toolkit/ui_window.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

// The height of the status bar of the first key window's scene, 0 when any
// link is missing: what the web login screen computes.
CGFloat StatusBarHeight() {
  for (const auto& window : UIApplication::shared().windows()) {
    if (!window->isKeyWindow()) continue;
    auto scene = window->windowScene();
    if (!scene || !scene->statusBarManager()) return 0;
    return scene->statusBarManager()->statusBarFrame().height();
  }
  return 0;
}

TEST(UIApplicationTest, OpenRecordsTheAddressAndCompletesLater) {
  MainLoop::main().useVirtualTime();
  auto& app = UIApplication::shared();
  bool completed = false;
  app.open(*URL::fromString("https://obolo.io/terms"));
  app.open(*URL::fromString("mailto:support@obolo.io"), {}, [&](bool success) { completed = success; });
  EXPECT_FALSE(completed);
  MainLoop::main().runFor(0s);
  EXPECT_TRUE(completed);
  ASSERT_EQ(app.openedURLs().size(), 2u);
  EXPECT_EQ(app.openedURLs()[1].absoluteString(), "mailto:support@obolo.io");
}

TEST(UIApplicationTest, StatusBarHeightComesFromTheKeyWindowsScene) {
  EXPECT_EQ(StatusBarHeight(), 0) << "no windows yet";

  auto plain = std::make_shared<UIWindow>();  // no scene
  plain->makeKeyAndVisible();
  EXPECT_EQ(StatusBarHeight(), 0);

  auto scene = std::make_shared<UIWindowScene>();
  auto window = std::make_shared<UIWindow>(scene);
  window->makeKeyAndVisible();
  EXPECT_TRUE(window->isKeyWindow());
  EXPECT_FALSE(plain->isKeyWindow()) << "one key window at a time";
  EXPECT_EQ(UIApplication::shared().windows().size(), 2u);
  EXPECT_EQ(StatusBarHeight(), 47);

  scene->statusBarManager()->setStatusBarFrame(CGRect(0, 0, 390, 20));
  EXPECT_EQ(StatusBarHeight(), 20);
  scene->setStatusBarManager(nullptr);
  EXPECT_EQ(StatusBarHeight(), 0);
}

TEST(UIApplicationTest, WindowsStartHiddenAndUnlisted) {
  auto window = std::make_shared<UIWindow>();
  EXPECT_TRUE(window->isHidden());
  EXPECT_TRUE(UIApplication::shared().windows().empty());
  EXPECT_EQ(UIApplication::shared().keyWindow(), nullptr);
}

}  // namespace
}  // namespace obolo
