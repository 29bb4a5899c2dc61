#include <gtest/gtest.h>

#include "entry/constants.h"
#include "entry/global_variable.h"
#include "entry/obolo.h"
#include "entry/paywall_attributes.h"

namespace obolo {
namespace {

TEST(ConfigurationTest, FreshProcessStartsEmpty) {
  const GlobalVariable& global = GlobalVariable::shared();
  EXPECT_EQ(global.accessKey(), "");
  EXPECT_EQ(global.category(), "");
  EXPECT_EQ(global.articleUrl(), "");
  EXPECT_EQ(global.publisherCustomerId(), "");
  EXPECT_EQ(global.publisherDomain(), "");
  EXPECT_EQ(global.logoUrl(), "");
  EXPECT_EQ(global.publisherId(), 0);
}

TEST(ConfigurationTest, ConstructionStoresEachTextUnderItsOwnField) {
  // The logo address is the third argument and the article address the fourth;
  // swapping them would send the logo as the article to the service.
  Obolo obolo("key-1", "sports", "https://news.example/logo.png", "https://news.example/a/1", "reader-9",
              "news.example");
  const GlobalVariable& global = GlobalVariable::shared();
  EXPECT_EQ(global.accessKey(), "key-1");
  EXPECT_EQ(global.category(), "sports");
  EXPECT_EQ(global.logoUrl(), "https://news.example/logo.png");
  EXPECT_EQ(global.articleUrl(), "https://news.example/a/1");
  EXPECT_EQ(global.publisherCustomerId(), "reader-9");
  EXPECT_EQ(global.publisherDomain(), "news.example");
}

TEST(ConfigurationTest, LatestConstructionIsInForceAndPublisherIdSurvives) {
  GlobalVariable::shared().setPublisherId(7);
  Obolo first("key-1", "sports", "logo-1", "article-1", "reader-1", "one.example");
  Obolo second("", "", "", "", "", "");
  const GlobalVariable& global = GlobalVariable::shared();
  EXPECT_EQ(global.accessKey(), "");
  EXPECT_EQ(global.articleUrl(), "");
  EXPECT_EQ(global.publisherDomain(), "");
  EXPECT_EQ(global.publisherId(), 7);
}

TEST(ConfigurationTest, BidConstantsAreTheFixedStandIns) {
  EXPECT_EQ(IP_ADDRESS, "10.0.0.0");
  EXPECT_EQ(USER_AGENT.size(), 135u);
  EXPECT_TRUE(USER_AGENT.starts_with("Mozilla/5.0 (iPhone; CPU iPhone OS 6_0 like Mac OS X)"));
  EXPECT_TRUE(USER_AGENT.ends_with("Mobile/10A5376e Safari/8536.25"));
}

TEST(ConfigurationTest, EachPaywallAttributesOwnsItsUiAttributes) {
  PaywallAttributes a;
  PaywallAttributes b;
  EXPECT_EQ(a.primaryColor, "");
  EXPECT_FALSE(a.unlockOnLoad);
  ASSERT_NE(a.ui, nullptr);
  EXPECT_NE(a.ui, b.ui);
  a.ui->title = "Read on";
  EXPECT_EQ(b.ui->title, "");
}

}  // namespace
}  // namespace obolo
