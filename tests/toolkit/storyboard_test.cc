#include <gtest/gtest.h>

#include <any>
#include <chrono>
#include <memory>
#include <string>

#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/ui_storyboard.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

class LoginScreen : public UIViewController {
 public:
  std::string bid_id;  // set by the opener while preparing the segue
  std::string bid_id_when_loaded;
  void viewDidLoad() override { bid_id_when_loaded = bid_id; }
};

class CardScreen : public UIViewController {
 public:
  std::string bid_id = "345";
  std::string prepared_identifier;
  std::any prepared_sender;
  bool destination_was_presented = true;

  void prepare(const UIStoryboardSegue& segue, const std::any& sender) override {
    prepared_identifier = segue.identifier();
    prepared_sender = sender;
    EXPECT_EQ(segue.source().get(), this);
    destination_was_presented = segue.destination()->presentingViewController() != nullptr;
    if (auto login = std::dynamic_pointer_cast<LoginScreen>(segue.destination())) login->bid_id = bid_id;
  }
};

class StoryboardTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    UIStoryboard::registerStoryboard(
        "Test", {.scenes = {{"CardID", [] { return std::make_shared<CardScreen>(); }},
                            {"LoginID", [] { return std::make_shared<LoginScreen>(); }},
                            {"BrokenID", [] { return std::shared_ptr<UIViewController>(); }}},
                 .segues = {{"CardID", "CardToLogin", "LoginID", UIModalPresentationStyle::fullScreen},
                            {"CardID", "CardToNowhere", "MissingID", std::nullopt}},
                 .initialScene = "CardID"});
  }
};

TEST_F(StoryboardTest, InstantiatesFreshControllersThatRememberTheirStoryboardAndScene) {
  UIStoryboard storyboard("Test", Bundle::withIdentifier(Bundle::kKitIdentifier));
  ASSERT_TRUE(storyboard.exists());
  auto first = storyboard.instantiateViewController<CardScreen>("CardID");
  auto second = storyboard.instantiateViewController("CardID");
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, second);
  ASSERT_TRUE(first->storyboard().has_value());
  EXPECT_EQ(first->storyboard()->name(), "Test");
  EXPECT_EQ(first->sceneIdentifier(), "CardID");
  EXPECT_FALSE(first->isViewLoaded()) << "instantiating must not load the view";
  EXPECT_NE(std::dynamic_pointer_cast<CardScreen>(storyboard.instantiateInitialViewController()), nullptr);
}

TEST_F(StoryboardTest, UnknownScenesStoryboardsAndWrongTypesGiveNull) {
  UIStoryboard storyboard("Test");
  EXPECT_EQ(storyboard.instantiateViewController("NopeID"), nullptr);
  EXPECT_EQ(storyboard.instantiateViewController("BrokenID"), nullptr);
  EXPECT_EQ(storyboard.instantiateViewController<LoginScreen>("CardID"), nullptr);
  UIStoryboard missing("NotRegistered");
  EXPECT_FALSE(missing.exists());
  EXPECT_EQ(missing.instantiateViewController("CardID"), nullptr);
}

TEST_F(StoryboardTest, PerformSeguePreparesTheNewDestinationThenPresentsIt) {
  auto card = UIStoryboard("Test").instantiateViewController<CardScreen>("CardID");
  card->performSegue("CardToLogin", std::any(card));

  EXPECT_EQ(card->prepared_identifier, "CardToLogin");
  EXPECT_EQ(std::any_cast<std::shared_ptr<CardScreen>>(card->prepared_sender), card);
  EXPECT_FALSE(card->destination_was_presented) << "prepare runs before the presentation";
  auto login = std::dynamic_pointer_cast<LoginScreen>(card->presentedViewController());
  ASSERT_NE(login, nullptr);
  EXPECT_EQ(login->bid_id_when_loaded, "345") << "the destination's view loads after prepare";
  EXPECT_EQ(login->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
  EXPECT_EQ(login->sceneIdentifier(), "LoginID");
}

TEST_F(StoryboardTest, UnknownSegueOrDestinationIsLoggedAndNothingHappens) {
  testing::LogCapture log;
  auto card = UIStoryboard("Test").instantiateViewController<CardScreen>("CardID");
  card->performSegue("NoSuchSegue", {});
  card->performSegue("CardToNowhere", {});
  auto outside = std::make_shared<CardScreen>();  // not from a storyboard
  outside->performSegue("CardToLogin", {});
  EXPECT_EQ(card->presentedViewController(), nullptr);
  EXPECT_EQ(outside->presentedViewController(), nullptr);
  EXPECT_TRUE(card->prepared_identifier.empty());
  EXPECT_EQ(log.lines().size(), 3u);
}

}  // namespace
}  // namespace obolo
