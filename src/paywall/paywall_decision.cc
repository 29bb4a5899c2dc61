#include "paywall/paywall_decision.h"

namespace obolo {

PaywallDecision DecidePaywall(const DataSet& data, bool isRedirectToPaywall) {
  PaywallDecision decision;
  const bool applies = data.isPaywallEnabledInCountry == true && data.articleActive == true;
  if (!applies) {
    decision.outcome = PaywallDecision::Outcome::kHide;
    return decision;
  }
  const bool paid = data.unlocked == true;
  const bool instant =
      data.oboloTransactionMode.has_value() && (*data.oboloTransactionMode != "normal" || isRedirectToPaywall);
  if (paid && instant) {
    decision.outcome = PaywallDecision::Outcome::kReveal;
    return decision;
  }
  decision.outcome = PaywallDecision::Outcome::kShowCard;
  if (data.isCreditAllowed == false) {
    const double balance = data.customerBalance.value_or(0.0);
    const double price = data.articlePriceInLocalCurrency.value_or(0.0);
    decision.transactionMode = data.oboloTransactionMode.value_or("");
    decision.unlockButtonHidden = balance < price;
  }
  return decision;
}

}  // namespace obolo
