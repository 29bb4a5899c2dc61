#include "paywall/paywall_decision.h"

#include <gtest/gtest.h>

#include "paywall/card_content.h"

namespace obolo {
namespace {

using Outcome = PaywallDecision::Outcome;

DataSet Bid(std::optional<bool> enabled, std::optional<bool> active, std::optional<bool> unlocked,
            std::optional<std::string> mode) {
  DataSet data;
  data.isPaywallEnabledInCountry = enabled;
  data.articleActive = active;
  data.unlocked = unlocked;
  data.oboloTransactionMode = std::move(mode);
  return data;
}

TEST(PaywallDecisionTest, OutcomeOverEveryFlagCombination) {
  struct Case {
    DataSet data;
    bool redirected;
    Outcome outcome;
    const char* why;
  } cases[] = {
      {Bid(false, true, true, "instant"), false, Outcome::kHide, "paywall disabled in the country"},
      {Bid(std::nullopt, true, false, "normal"), false, Outcome::kHide, "absent country flag counts as false"},
      {Bid(true, false, false, "normal"), false, Outcome::kHide, "inactive article"},
      {Bid(true, std::nullopt, false, "normal"), false, Outcome::kHide, "absent active flag"},
      {Bid(true, true, false, "normal"), false, Outcome::kShowCard, "not paid"},
      {Bid(true, true, true, "normal"), false, Outcome::kShowCard, "unlocked in normal mode on a first bid"},
      {Bid(true, true, true, "normal"), true, Outcome::kReveal, "the same record after a login"},
      {Bid(true, true, true, "instant"), false, Outcome::kReveal, "unlocked in another mode"},
      {Bid(true, true, true, "Normal"), false, Outcome::kReveal, "the comparison is case-sensitive"},
      {Bid(true, true, true, std::nullopt), false, Outcome::kShowCard, "missing mode"},
      {Bid(true, true, true, std::nullopt), true, Outcome::kShowCard, "missing mode even after a login"},
      {Bid(true, true, std::nullopt, "instant"), true, Outcome::kShowCard, "absent unlocked flag"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DecidePaywall(c.data, c.redirected).outcome, c.outcome) << c.why;
  }
}

// Without credit the unlock button hides when the balance is below the price;
// the rule keeps the bid's mode ("" when it has none). With credit allowed or
// not said the rule does not run: button and mode are left as they are.
TEST(PaywallDecisionTest, CreditRuleComparesBalanceWithPriceStrictly) {
  struct Case {
    std::optional<bool> creditAllowed;
    std::optional<double> balance;
    std::optional<double> price;
    std::optional<std::string> mode;
    std::optional<bool> hidden;
    std::optional<std::string> keptMode;
  } cases[] = {
      {false, 4.99, 5.0, "normal", true, "normal"},
      {false, 5.0, 5.0, "normal", false, "normal"},
      {false, 5.01, 5.0, std::nullopt, false, ""},
      {false, std::nullopt, 0.5, "normal", true, "normal"},
      {false, 3.0, std::nullopt, "normal", false, "normal"},
      {true, 0.0, 5.0, "normal", std::nullopt, std::nullopt},
      {std::nullopt, 0.0, 5.0, "normal", std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    DataSet data = Bid(true, true, false, c.mode);
    data.isCreditAllowed = c.creditAllowed;
    data.customerBalance = c.balance;
    data.articlePriceInLocalCurrency = c.price;
    EXPECT_EQ(DecidePaywall(data, false), (PaywallDecision{Outcome::kShowCard, c.hidden, c.keptMode}))
        << "credit " << c.creditAllowed.value_or(-1) << " balance " << c.balance.value_or(-1);
  }
  // Revealed records never run the rule.
  DataSet paid = Bid(true, true, true, "instant");
  paid.isCreditAllowed = false;
  EXPECT_EQ(DecidePaywall(paid, false), (PaywallDecision{Outcome::kReveal, std::nullopt, std::nullopt}));
}

// The screen tests show a filled card and an empty balance text; settings the
// service leaves out leave the card empty and the banner as it is.
TEST(CardContentTest, AbsentSettingsLeaveTheCardEmptyAndTheBannerAsItIs) {
  PaywallSettingsSet settings;
  settings.showDesktopImage = true;  // not the phone's banner
  const CardContent content = CardContentFor(settings);
  EXPECT_EQ(content.banner, std::nullopt);
  EXPECT_EQ(content.title, std::nullopt);
  EXPECT_EQ(content.prompt, "");
  EXPECT_EQ(content.unlockButtonTitle, std::nullopt);
  EXPECT_EQ(content.price, std::nullopt);
  EXPECT_TRUE(content.agreementHidden);
  EXPECT_EQ(content.agreementTitle, std::nullopt);
  EXPECT_EQ(content.agreementBottom, 0);
}

}  // namespace
}  // namespace obolo
