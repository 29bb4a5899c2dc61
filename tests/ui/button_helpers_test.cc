#include "ui/button_helpers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "toolkit/ui_application.h"

namespace obolo {
namespace {

UIColor ColorOf(const NSAttributedString& text, NSAttributedStringKey key) {
  return std::get<UIColor>(*text.attributeOverWholeText(key));
}

TEST(UnderlineTest, UnderlinesTheWholeTitleInTheTitleColourOrElseTheLabels) {
  auto button = std::make_shared<UIButton>();
  const UIColor teal(0, 0.5, 0.5, 1);
  button->setTitle("Terms of use", UIControlState::normal);
  button->setTitleColor(teal, UIControlState::normal);
  underline(*button);
  auto title = button->attributedTitle(UIControlState::normal);
  ASSERT_TRUE(title.has_value());
  EXPECT_EQ(title->string(), "Terms of use");
  EXPECT_EQ(ColorOf(*title, NSAttributedStringKey::underlineColor), teal);
  EXPECT_EQ(ColorOf(*title, NSAttributedStringKey::foregroundColor), teal);
  EXPECT_EQ(title->attributeOverWholeText(NSAttributedStringKey::underlineStyle),
            NSAttributeValue(NSUnderlineStyle::single));
  EXPECT_EQ(button->titleLabel()->text(), "Terms of use");

  auto uncoloured = std::make_shared<UIButton>();
  uncoloured->setTitle("Privacy", UIControlState::normal);
  uncoloured->titleLabel()->setTextColor(UIColor::darkGray());
  underline(*uncoloured);
  EXPECT_EQ(ColorOf(*uncoloured->attributedTitle(UIControlState::normal), NSAttributedStringKey::foregroundColor),
            UIColor::darkGray());

  for (std::optional<std::string> empty : {std::optional<std::string>(), std::optional<std::string>("")}) {
    auto untitled = std::make_shared<UIButton>();
    untitled->setTitle(empty, UIControlState::normal);
    underline(*untitled);
    EXPECT_FALSE(untitled->attributedTitle(UIControlState::normal).has_value());
  }
}

TEST(SetImageTintColorTest, ImageBecomesATemplateCopyAndTheTintIsSet) {
  auto button = std::make_shared<UIButton>();
  auto image = UIImage::named("wallet-icon", Bundle::withIdentifier(Bundle::kKitIdentifier));
  ASSERT_NE(image, nullptr);
  button->setImage(image, UIControlState::normal);
  setImageTintColor(*button, UIColor::white());
  auto templ = button->image(UIControlState::normal);
  ASSERT_NE(templ, nullptr);
  EXPECT_EQ(templ->renderingMode(), UIImageRenderingMode::alwaysTemplate);
  EXPECT_EQ(templ->data(), image->data());
  EXPECT_EQ(image->renderingMode(), UIImageRenderingMode::automatic) << "the original is unchanged";
  EXPECT_EQ(button->tintColor(), UIColor::white());
}

TEST(OpenUrlTest, TheTagPicksTheLink) {
  struct Case {
    int tag;
    std::string_view url;
  } cases[] = {
      {0, "https://obolo.io/terms"},   {1, "https://obolo.io/privacy"},  {2, "mailto:support@obolo.io"},
      {3, "https://obolo.io/privacy"}, {-1, "https://obolo.io/privacy"}, {7, "https://obolo.io/privacy"},
  };
  auto& app = UIApplication::shared();
  for (const auto& c : cases) {
    UIButton button;
    button.setTag(c.tag);
    const std::size_t before = app.openedURLs().size();
    openUrl(button);
    ASSERT_EQ(app.openedURLs().size(), before + 1) << c.tag;
    EXPECT_EQ(app.openedURLs().back().absoluteString(), c.url) << c.tag;
  }
}

}  // namespace
}  // namespace obolo
