// The layout pass: constraints and intrinsic sizes decide frames, once per
// turn of the main loop.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "support/log_capture.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view.h"

namespace obolo {
namespace {

using testing::LogCapture;

// A view with a content size of its own, like a label or an image.
class Block : public UIView {
 public:
  explicit Block(CGSize content) : content_(content) {}
  void setContent(CGSize content) {
    content_ = content;
    invalidateIntrinsicContentSize();
  }
  CGSize intrinsicContentSize() const override { return content_; }

 private:
  CGSize content_;
};

// Counts its layout passes.
class CountingView : public UIView {
 public:
  using UIView::UIView;
  void layoutSubviews() override {
    UIView::layoutSubviews();
    ++passes;
  }
  int passes = 0;
};

template <class View = UIView, class... Args>
std::shared_ptr<View> Constrained(const std::shared_ptr<UIView>& parent, Args&&... args) {
  auto view = std::make_shared<View>(std::forward<Args>(args)...);
  view->setTranslatesAutoresizingMaskIntoConstraints(false);
  parent->addSubview(view);
  return view;
}

std::shared_ptr<UIView> Root(CGSize size = {390, 844}) { return std::make_shared<UIView>(CGRect({0, 0}, size)); }

// A card like the paywall's: a column of three blocks, the middle one with a
// height constraint and a gap below it that can both close.
struct Column {
  std::shared_ptr<UIView> root = Root();
  std::shared_ptr<UIView> card = Constrained(root);
  std::shared_ptr<Block> header = Constrained<Block>(card, CGSize{100, 60});
  std::shared_ptr<Block> button = Constrained<Block>(card, CGSize{80, 20});
  std::shared_ptr<Block> footer = Constrained<Block>(card, CGSize{100, 30});
  std::shared_ptr<NSLayoutConstraint> buttonHeight = button->heightAnchor().equalToConstant(45);
  std::shared_ptr<NSLayoutConstraint> gapBelowButton = footer->topAnchor().equalTo(button->bottomAnchor(), 5);
  std::shared_ptr<NSLayoutConstraint> top = card->topAnchor().equalTo(root->topAnchor(), 16);
  std::shared_ptr<NSLayoutConstraint> vertical = card->centerYAnchor().equalTo(root->centerYAnchor());
  std::shared_ptr<NSLayoutConstraint> bottom = root->bottomAnchor().equalTo(card->bottomAnchor(), 16);

  Column() {
    NSLayoutConstraint::activate({
        card->leadingAnchor().equalTo(root->leadingAnchor(), 16),
        root->trailingAnchor().equalTo(card->trailingAnchor(), 16),
        header->topAnchor().equalTo(card->topAnchor(), 20),
        button->topAnchor().equalTo(header->bottomAnchor(), 16),
        buttonHeight,
        gapBelowButton,
        card->bottomAnchor().equalTo(footer->bottomAnchor(), 16),
        vertical,
    });
    for (const auto& block : {header, button, footer}) {
      NSLayoutConstraint::activate({block->leadingAnchor().equalTo(card->leadingAnchor(), 24),
                                    card->trailingAnchor().equalTo(block->trailingAnchor(), 24)});
    }
    root->layoutIfNeeded();
  }
};

TEST(LayoutTest, ConstraintsPlaceAColumnWhoseHeightFollowsItsContent) {
  Column column;
  EXPECT_EQ(column.card->frame(), CGRect(16, 326, 358, 20 + 60 + 16 + 45 + 5 + 30 + 16));
  EXPECT_EQ(column.header->frame(), CGRect(24, 20, 310, 60));
  EXPECT_EQ(column.button->frame(), CGRect(24, 96, 310, 45));
  EXPECT_EQ(column.footer->frame(), CGRect(24, 146, 310, 30));

  column.header->setContent(CGSize{100, 160});
  column.root->layoutIfNeeded();
  EXPECT_EQ(column.card->frame().height(), 292) << "taller content makes a taller card";
  EXPECT_EQ(column.card->frame().midY(), 422) << "still centred";
}

TEST(LayoutTest, PlacementConstraintsMoveTheCardToTopCentreOrBottom) {
  struct Case {
    const char* name;
    bool top, vertical, bottom;
    CGFloat expectedY;
  } cases[] = {
      {"top", true, false, false, 16},
      {"centre", false, true, false, 422 - 96},
      {"bottom", false, false, true, 844 - 16 - 192},
  };
  for (const Case& c : cases) {
    Column column;
    column.vertical->setActive(c.vertical);
    column.top->setActive(c.top);
    column.bottom->setActive(c.bottom);
    column.root->layoutIfNeeded();
    EXPECT_EQ(column.card->frame(), CGRect(16, c.expectedY, 358, 192)) << c.name;
  }
}

TEST(LayoutTest, AHiddenButtonWithZeroConstantsLeavesNoGap) {
  Column column;
  const CGFloat footerBefore = column.footer->frame().minY();
  column.button->setHidden(true);
  column.buttonHeight->setConstant(0);
  column.gapBelowButton->setConstant(0);
  column.root->layoutIfNeeded();
  EXPECT_EQ(column.footer->frame().minY(), footerBefore - 50) << "the button's 45 and the gap's 5 are gone";
  EXPECT_EQ(column.card->frame().height(), 192 - 50);
}

TEST(LayoutTest, WhenBothAreActiveTheMoreImportantConstraintWins) {
  for (const float topPriority : {250.0f, 1000.0f}) {
    Column column;
    column.card->heightAnchor().equalToConstant(192)->setActive(true);  // no room to stretch
    column.top->setPriority(topPriority);
    column.top->setActive(true);  // the vertical one stays active
    LogCapture log;
    column.root->layoutIfNeeded();
    EXPECT_EQ(column.card->frame().midY(), 422) << "the vertical constraint wins";
    if (topPriority < UILayoutPriorityRequired) {
      EXPECT_TRUE(log.lines().empty()) << "a lower priority yields quietly";
    } else {
      // Two required constraints that contradict (the card cannot stretch):
      // the one activated later breaks, and says so once.
      EXPECT_EQ(log.lines(), std::vector<std::string>{
                                 "Unable to simultaneously satisfy constraints; breaking view.top == 1 * view.top + 16"});
      column.root->setNeedsLayout();
      column.root->layoutIfNeeded();
      EXPECT_EQ(log.lines().size(), 1u);
    }
  }
}

TEST(LayoutTest, AMaximumHeightMakesTheLeastImportantHeightYield) {
  Column column;
  column.buttonHeight->setPriority(700);
  NSLayoutConstraint::make(column.card, NSLayoutAttribute::height, NSLayoutRelation::lessThanOrEqual, column.root,
                           NSLayoutAttribute::height, 0.25, -41)
      ->setActive(true);  // 211 - 41 = 170 of 844
  column.root->layoutIfNeeded();
  EXPECT_EQ(column.card->frame().height(), 170);
  EXPECT_EQ(column.button->frame().height(), 45 - (192 - 170)) << "the button gave way, the blocks kept their content";
  EXPECT_EQ(column.header->frame().height(), 60);
}

TEST(LayoutTest, HuggingDecidesWhichOfTwoViewsStretches) {
  auto root = Root({300, 100});
  auto name = Constrained<Block>(root, CGSize{80, 20});
  auto value = Constrained<Block>(root, CGSize{50, 20});
  NSLayoutConstraint::activate({
      name->leadingAnchor().equalTo(root->leadingAnchor()),
      value->leadingAnchor().equalTo(name->trailingAnchor(), 10),
      root->trailingAnchor().equalTo(value->trailingAnchor()),
      name->topAnchor().equalTo(root->topAnchor()),
      value->topAnchor().equalTo(root->topAnchor()),
  });
  value->setContentHuggingPriority(251, UILayoutConstraintAxis::horizontal);
  root->layoutIfNeeded();
  EXPECT_EQ(name->frame(), CGRect(0, 0, 240, 20)) << "the lower hugging priority stretches";
  EXPECT_EQ(value->frame(), CGRect(250, 0, 50, 20));
}

TEST(LayoutTest, WrappingTextMakesTheCardTallerAndANarrowerScreenWrapsMore) {
  auto root = Root({390, 844});
  auto card = Constrained(root);
  auto label = Constrained<UILabel>(card);
  label->setNumberOfLines(0);
  NSLayoutConstraint::activate({
      card->leadingAnchor().equalTo(root->leadingAnchor(), 16),
      root->trailingAnchor().equalTo(card->trailingAnchor(), 16),
      card->topAnchor().equalTo(root->topAnchor()),
      label->topAnchor().equalTo(card->topAnchor(), 10),
      card->bottomAnchor().equalTo(label->bottomAnchor(), 10),
      label->leadingAnchor().equalTo(card->leadingAnchor(), 20),
      card->trailingAnchor().equalTo(label->trailingAnchor(), 20),
  });
  label->setText("Unlock");
  root->layoutIfNeeded();
  const CGFloat oneLine = card->frame().height();
  EXPECT_GT(oneLine, 20);

  label->setText("Unlock this article from The Example Times for 0.50 EUR. No subscription: you pay for this "
                 "article only, once, and it stays yours.");
  root->layoutIfNeeded();
  const CGFloat wide = card->frame().height();
  EXPECT_GE(wide, 20 + 3 * (oneLine - 20)) << "a long text wraps to several lines";
  EXPECT_EQ(label->frame().width(), 390 - 32 - 40);

  root->setFrame(CGRect(0, 0, 320, 568));  // a small phone
  root->layoutIfNeeded();
  EXPECT_EQ(label->frame().width(), 320 - 32 - 40);
  EXPECT_GT(card->frame().height(), wide) << "a narrower screen wraps into more lines";
}

TEST(LayoutTest, LayoutRunsOnceAtTheEndOfTheTurnNotOnEveryChange) {
  auto root = std::make_shared<CountingView>(CGRect(0, 0, 390, 844));
  auto card = Constrained(root);
  auto top = card->topAnchor().equalTo(root->topAnchor(), 10);
  NSLayoutConstraint::activate({top, card->leadingAnchor().equalTo(root->leadingAnchor()),
                                card->widthAnchor().equalToConstant(100), card->heightAnchor().equalToConstant(50)});
  root->layoutIfNeeded();
  const int passes = root->passes;

  MainLoop::main().post([&] {
    for (int i = 1; i <= 10; ++i) top->setConstant(10 + i);
    EXPECT_EQ(card->frame().minY(), 10) << "nothing moves while the turn runs";
  });
  MainLoop::main().runFor(std::chrono::milliseconds(0));
  EXPECT_EQ(card->frame().minY(), 20) << "the turn's end laid the card out";
  EXPECT_EQ(root->passes, passes + 1) << "ten changes, one pass";

  MainLoop::main().post([] {});
  MainLoop::main().runFor(std::chrono::milliseconds(0));
  EXPECT_EQ(root->passes, passes + 1) << "a turn without changes lays nothing out";
}

TEST(LayoutTest, ResizingTheScreenLaysTheTreeOutAgain) {
  Column column;
  column.root->setFrame(CGRect(0, 0, 844, 390));  // rotated
  MainLoop::main().post([] {});
  MainLoop::main().runFor(std::chrono::milliseconds(0));
  EXPECT_EQ(column.card->frame(), CGRect(16, 195 - 96, 844 - 32, 192));
  EXPECT_EQ(column.footer->frame().width(), 844 - 32 - 48);
}

TEST(LayoutTest, ConstraintsThatCannotBeInstalledStayInactive) {
  auto a = Root();
  auto b = Root();
  auto constraint = a->topAnchor().equalTo(b->topAnchor());
  LogCapture log;
  constraint->setActive(true);
  EXPECT_FALSE(constraint->isActive());
  EXPECT_EQ(log.lines().size(), 1u) << "one line says why";

  auto child = Constrained(a);
  auto pinned = child->topAnchor().equalTo(a->topAnchor(), 7);
  pinned->setActive(true);
  EXPECT_EQ(pinned->owner(), a) << "installed in the closest common ancestor";
  child->removeFromSuperview();
  a->layoutIfNeeded();  // an item outside the tree is skipped, not a crash
  pinned->setActive(false);
  EXPECT_TRUE(a->constraints().empty());
}

TEST(LayoutTest, AButtonsIntrinsicSizeIsItsImageAndTitleWithinItsInsets) {
  auto root = Root({300, 200});
  auto button = Constrained<UIButton>(root);
  button->setTitle("Pay", UIControlState::normal);
  const CGSize title = button->intrinsicContentSize();
  button->setContentEdgeInsets({6, 10, 6, 10});
  button->setImage(nullptr, UIControlState::normal);
  EXPECT_EQ(button->intrinsicContentSize(), (CGSize{title.width + 20, title.height + 12}));

  NSLayoutConstraint::activate(
      {button->leadingAnchor().equalTo(root->leadingAnchor()), button->topAnchor().equalTo(root->topAnchor())});
  root->layoutIfNeeded();
  EXPECT_EQ(button->frame().size, button->intrinsicContentSize()) << "a button hugs its content";
  EXPECT_EQ(button->titleLabel()->frame(), CGRect(10, 6, title.width, title.height));
}

}  // namespace
}  // namespace obolo
