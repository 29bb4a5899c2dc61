#include "paywall/paywall_decision.h"

#include <gtest/gtest.h>

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

TEST(PaywallDecisionTest, CreditRuleComparesBalanceWithPriceStrictly) {
  struct Case {
    std::optional<bool> creditAllowed;
    std::optional<double> balance;
    std::optional<double> price;
    std::optional<bool> hidden;  // none: the button is left as it is
  } cases[] = {
      {false, 4.99, 5.0, true},
      {false, 5.0, 5.0, false},
      {false, 5.01, 5.0, false},
      {false, std::nullopt, 0.5, true},
      {false, 3.0, std::nullopt, false},
      {true, 0.0, 5.0, std::nullopt},
      {std::nullopt, 0.0, 5.0, std::nullopt},
  };
  for (const auto& c : cases) {
    DataSet data = Bid(true, true, false, "normal");
    data.isCreditAllowed = c.creditAllowed;
    data.customerBalance = c.balance;
    data.articlePriceInLocalCurrency = c.price;
    const PaywallDecision decision = DecidePaywall(data, false);
    EXPECT_EQ(decision.outcome, Outcome::kShowCard);
    EXPECT_EQ(decision.unlockButtonHidden, c.hidden)
        << "credit " << c.creditAllowed.value_or(-1) << " balance " << c.balance.value_or(-1);
  }
}

TEST(PaywallDecisionTest, CreditRuleKeepsTheModeOnlyWhenItRuns) {
  DataSet data = Bid(true, true, false, std::nullopt);
  data.isCreditAllowed = false;
  EXPECT_EQ(DecidePaywall(data, false).transactionMode, "");
  data.oboloTransactionMode = "normal";
  EXPECT_EQ(DecidePaywall(data, false).transactionMode, "normal");
  data.isCreditAllowed = true;
  EXPECT_EQ(DecidePaywall(data, false).transactionMode, std::nullopt);
  // Revealed or hidden records never run the rule.
  DataSet paid = Bid(true, true, true, "instant");
  paid.isCreditAllowed = false;
  EXPECT_EQ(DecidePaywall(paid, false), (PaywallDecision{Outcome::kReveal, std::nullopt, std::nullopt}));
}

}  // namespace
}  // namespace obolo
