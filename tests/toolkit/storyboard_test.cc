#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <string>

#include "platform/main_loop.h"
#include "toolkit/ui_storyboard.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {
namespace {

class LoginScreen : public UIViewController {
 public:
  std::string bid_id;  // set by the opener while preparing the segue
  std::string bid_id_when_loaded;
  void viewDidLoad() override { bid_id_when_loaded = bid_id; }
};

class CardScreen : public UIViewController {
 public:
  std::string prepared_identifier;
  std::any prepared_sender;
  bool destination_was_presented = true;

  void prepare(const UIStoryboardSegue& segue, const std::any& sender) override {
    prepared_identifier = segue.identifier();
    prepared_sender = sender;
    destination_was_presented = segue.destination()->presentingViewController() != nullptr;
    if (auto login = std::dynamic_pointer_cast<LoginScreen>(segue.destination())) login->bid_id = "345";
  }
};

class StoryboardTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    UIStoryboard::registerStoryboard(
        "Test", {.scenes = {{"CardID", [] { return std::make_shared<CardScreen>(); }},
                            {"LoginID", [] { return std::make_shared<LoginScreen>(); }}},
                 .segues = {{"CardID", "CardToLogin", "LoginID", UIModalPresentationStyle::fullScreen},
                            {"CardID", "CardToNowhere", "MissingID", std::nullopt}},
                 .initialScene = "CardID"});
  }
};

TEST_F(StoryboardTest, InstantiatesFreshUnloadedControllersOfTheRightTypeOrNull) {
  UIStoryboard storyboard("Test");
  auto first = storyboard.instantiateViewController<CardScreen>("CardID");
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, storyboard.instantiateViewController("CardID"));
  EXPECT_FALSE(first->isViewLoaded()) << "instantiating must not load the view";
  EXPECT_EQ(storyboard.instantiateViewController("NopeID"), nullptr);
  EXPECT_EQ(storyboard.instantiateViewController<LoginScreen>("CardID"), nullptr);
  EXPECT_EQ(UIStoryboard("NotRegistered").instantiateViewController("CardID"), nullptr);
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
}

}  // namespace
}  // namespace obolo
