#include "ui/view_from_nib.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/log_capture.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_nib.h"

namespace obolo {
namespace {

class PromoView : public UIView {};
class EmptyView : public UIView {};
class MislaidView : public UIView {};
class UnregisteredView : public UIView {};
template <class T>
class Boxed {};

TEST(ViewFromNibTest, TypeNamesAreUnqualified) {
  EXPECT_EQ(UnqualifiedTypeName(typeid(PromoView)), "PromoView");
  EXPECT_EQ(UnqualifiedTypeName(typeid(UILabel)), "UILabel");
  EXPECT_EQ(UnqualifiedTypeName(typeid(Boxed<UILabel>)), "Boxed<obolo::UILabel>");
}

TEST(ViewFromNibTest, BuildsTheLayoutNamedAfterTheTypeAndReturnsItsFirstObject) {
  int built = 0;
  UINib::registerNib("PromoView", [&] {
    ++built;
    auto view = std::make_shared<PromoView>();
    view->addSubview(std::make_shared<UILabel>());
    return UINib::TopLevelObjects{view, std::make_shared<UILabel>()};
  });
  auto first = fromNib<PromoView>();
  auto second = fromNib<PromoView>();
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, second) << "each load builds fresh objects";
  EXPECT_EQ(first->subviews().size(), 1u);
  EXPECT_EQ(built, 2);
}

TEST(ViewFromNibTest, MissingEmptyOrMismatchedLayoutsAreReportedNotFatal) {
  UINib::registerNib("EmptyView", [] { return UINib::TopLevelObjects{}; });
  UINib::registerNib("MislaidView", [] { return UINib::TopLevelObjects{std::make_shared<UILabel>()}; });
  testing::LogCapture log;
  EXPECT_EQ(fromNib<UnregisteredView>(), nullptr);
  EXPECT_EQ(fromNib<EmptyView>(), nullptr);
  EXPECT_EQ(fromNib<MislaidView>(), nullptr);
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{"Could not load NIB named UnregisteredView",
                                      "NIB named EmptyView has no top-level object",
                                      "The first object of NIB named MislaidView is not a MislaidView"}));
}

}  // namespace
}  // namespace obolo
