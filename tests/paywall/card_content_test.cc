#include "paywall/card_content.h"

#include <gtest/gtest.h>

namespace obolo {
namespace {

TEST(CardContentTest, BannerFollowsShowMobileImageOnlyWhenGiven) {
  PaywallSettingsSet settings;
  settings.showMobileImage = true;
  EXPECT_EQ(CardContentFor(settings).banner, (BannerLayout{"background", 20, 174}));
  settings.showMobileImage = false;
  EXPECT_EQ(CardContentFor(settings).banner, (BannerLayout{std::nullopt, 0, 0}));
  settings.showMobileImage.reset();
  EXPECT_EQ(CardContentFor(settings).banner, std::nullopt);
  settings.showDesktopImage = true;  // not the phone's banner
  EXPECT_EQ(CardContentFor(settings).banner, std::nullopt);
}

TEST(CardContentTest, ConsentCheckboxShowsOnlyWithABalanceText) {
  PaywallSettingsSet settings;
  settings.obBalanceText = "I agree to pay from my wallet";
  CardContent content = CardContentFor(settings);
  EXPECT_FALSE(content.agreementHidden);
  EXPECT_EQ(content.agreementTitle, "I agree to pay from my wallet");
  EXPECT_EQ(content.agreementBottom, 20);

  for (std::optional<std::string> text : {std::optional<std::string>(""), std::optional<std::string>()}) {
    settings.obBalanceText = text;
    content = CardContentFor(settings);
    EXPECT_TRUE(content.agreementHidden);
    EXPECT_EQ(content.agreementTitle, std::nullopt);
    EXPECT_EQ(content.agreementBottom, 0);
  }
}

TEST(CardContentTest, TextsGoWhereTheyBelongAndAbsentOnesStayEmpty) {
  PaywallSettingsSet settings{"Title", "Prompt", "Unlock", "Consent", "Enjoy", true, false, "€0.50"};
  CardContent content = CardContentFor(settings);
  EXPECT_EQ(content.title, "Title");
  EXPECT_EQ(content.prompt, "Prompt");
  EXPECT_EQ(content.unlockButtonTitle, "Unlock");
  EXPECT_EQ(content.splashMessage, "Enjoy");
  EXPECT_EQ(content.price, "€0.50");

  content = CardContentFor(PaywallSettingsSet{});
  EXPECT_EQ(content.title, std::nullopt);
  EXPECT_EQ(content.prompt, "");
  EXPECT_EQ(content.unlockButtonTitle, std::nullopt);
  EXPECT_EQ(content.price, std::nullopt);
}

TEST(CardContentTest, UnlockButtonAndPlacementConstants) {
  EXPECT_EQ(UnlockButtonLayoutFor(true), (UnlockButtonLayout{true, 0, 0}));
  EXPECT_EQ(UnlockButtonLayoutFor(false), (UnlockButtonLayout{false, 45, 5}));
  EXPECT_EQ(PlacementFor(Position::top), (Placement{true, false, false, true, false, false}));
  EXPECT_EQ(PlacementFor(Position::bottom), (Placement{false, true, false, false, true, false}));
  EXPECT_EQ(PlacementFor(Position::center), (Placement{false, false, true, true, false, true}));
}

}  // namespace
}  // namespace obolo
