#include "preview/article_screen.h"

#include <utility>
#include <vector>

#include "toolkit/layout_constraint.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_screen.h"
#include "toolkit/ui_window_scene.h"

namespace obolo {
namespace {

constexpr CGFloat kStatusBarHeight = 47;
constexpr CGFloat kMastheadHeight = 56;
constexpr CGFloat kMargin = 20;

constexpr UIColor kInk{0.10, 0.10, 0.12, 1};
constexpr UIColor kBodyInk{0.22, 0.22, 0.25, 1};
constexpr UIColor kByline{0.45, 0.45, 0.48, 1};
constexpr UIColor kPicture{0.80, 0.85, 0.91, 1};
constexpr UIColor kHairline{0.85, 0.85, 0.87, 1};

constexpr const char* kParagraphs[] = {
    "After eleven hours of debate the council passed next year's budget by 27 votes to 22, shortly after two in "
    "the morning. The plan raises spending on schools and buses and holds the property tax where it is.",
    "The opposition called the bus plan a promise without a timetable. The mayor answered that the first new "
    "routes will run before the summer, paid for by the harbour lease that was signed in March.",
    "Residents who had waited since the afternoon to speak were given two minutes each. Many of them asked about "
    "the closing of the library branch on Mill Street, which the budget does not reopen.",
};

std::shared_ptr<UILabel> Text(std::string text, UIFont font, UIColor color) {
  auto label = std::make_shared<UILabel>();
  label->setTranslatesAutoresizingMaskIntoConstraints(false);
  label->setText(std::move(text));
  label->setFont(font);
  label->setTextColor(color);
  label->setNumberOfLines(0);
  return label;
}

// The headline, byline, picture and paragraphs, top to bottom.
void FillArticle(const std::shared_ptr<UIView>& content, std::string headline) {
  std::vector<std::shared_ptr<UIView>> column{
      Text(std::move(headline), UIFont::boldSystemFont(26), kInk),
      Text("By Sam Writer \u00B7 Politics \u00B7 6 min read", UIFont::systemFont(13), kByline),
  };
  auto picture = std::make_shared<UIView>();
  picture->setTranslatesAutoresizingMaskIntoConstraints(false);
  picture->setBackgroundColor(kPicture);
  picture->layer().setCornerRadius(10);
  column.push_back(picture);
  for (const char* paragraph : kParagraphs) column.push_back(Text(paragraph, UIFont::systemFont(17), kBodyInk));

  std::vector<std::shared_ptr<NSLayoutConstraint>> layout{picture->heightAnchor().equalToConstant(170)};
  std::shared_ptr<UIView> above;
  for (const auto& view : column) {
    content->addSubview(view);
    layout.push_back(view->leadingAnchor().equalTo(content->leadingAnchor(), kMargin));
    layout.push_back(content->trailingAnchor().equalTo(view->trailingAnchor(), kMargin));
    layout.push_back(above ? view->topAnchor().equalTo(above->bottomAnchor(), 14)
                           : view->topAnchor().equalTo(content->topAnchor(), kMargin));
    above = view;
  }
  NSLayoutConstraint::activate(layout);
}

}  // namespace

ArticleScreen::ArticleScreen(CGSize size, std::string headline)
    : window(std::make_shared<UIWindow>(std::make_shared<UIWindowScene>())),
      host(std::make_shared<UIViewController>()),
      content(std::make_shared<UIView>()) {
  UIScreen::main().setBounds(CGRect({0, 0}, size));
  window->setFrame(CGRect({0, 0}, size));
  window->windowScene()->statusBarManager()->setStatusBarFrame(CGRect(0, 0, size.width, kStatusBarHeight));
  window->setRootViewController(host);
  auto root = host->view();
  root->setBackgroundColor(UIColor::white());

  auto masthead = std::make_shared<UIView>(CGRect(0, 0, size.width, kStatusBarHeight + kMastheadHeight));
  masthead->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  masthead->setBackgroundColor(UIColor::white());
  auto name = std::make_shared<UILabel>(CGRect(0, kStatusBarHeight, size.width, kMastheadHeight - 1));
  name->setText("The Example Times");
  name->setFont(UIFont::boldSystemFont(22));
  name->setTextColor(kInk);
  name->setTextAlignment(NSTextAlignment::center);
  name->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  masthead->addSubview(name);
  auto rule = std::make_shared<UIView>(CGRect(0, kStatusBarHeight + kMastheadHeight - 1, size.width, 1));
  rule->setBackgroundColor(kHairline);
  rule->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  masthead->addSubview(rule);
  root->addSubview(masthead);

  const CGFloat top = kStatusBarHeight + kMastheadHeight;
  content->setFrame(CGRect(0, top, size.width, size.height - top));
  content->setAutoresizingMask(UIViewAutoresizing::flexibleWidth | UIViewAutoresizing::flexibleHeight);
  content->setClipsToBounds(true);
  root->addSubview(content);
  FillArticle(content, std::move(headline));
  window->makeKeyAndVisible();
}

void ArticleScreen::resize(CGSize size) {
  UIScreen::main().setBounds(CGRect({0, 0}, size));
  window->windowScene()->statusBarManager()->setStatusBarFrame(CGRect(0, 0, size.width, kStatusBarHeight));
  window->setFrame(CGRect({0, 0}, size));
}

}  // namespace obolo
