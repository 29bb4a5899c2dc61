// What a bid record means for the paywall, decided without any view.
//
// The paywall screen applies the outcome (hide, reveal, or show the card), so
// the rules stay readable and testable on their own.

#ifndef OBOLO_PAYWALL_PAYWALL_DECISION_H_
#define OBOLO_PAYWALL_PAYWALL_DECISION_H_

#include <optional>
#include <string>

#include "network/response_records.h"

namespace obolo {

struct PaywallDecision {
  enum class Outcome {
    kHide,      // the paywall does not apply to this reader and article
    kReveal,    // already paid for: reveal the article now
    kShowCard,  // offer the article
  };
  Outcome outcome = Outcome::kHide;

  // The credit rule's verdict, with kShowCard only: whether to hide the unlock
  // button. None when the rule did not run (credit allowed or not said), which
  // leaves the button as it is.
  std::optional<bool> unlockButtonHidden;
  // The transaction mode the credit rule keeps, when it ran.
  std::optional<std::string> transactionMode;

  friend bool operator==(const PaywallDecision&, const PaywallDecision&) = default;
};

// Decides over one bid record. An absent flag never counts as true:
//   applies = isPaywallEnabledInCountry and articleActive;
//   paid    = applies and unlocked;
//   instant = a transaction mode is present and is not exactly "normal", or the
//             reader has just come back from logging in.
// Not applying hides; paid and instant reveals; anything else shows the card.
// So a bid in mode "normal" reported as unlocked still shows the card, with
// its unlock button, until the reader has come back from logging in.
// With the card shown and credit explicitly not allowed, the unlock button is
// hidden when the balance is below the price (equal suffices to pay).
PaywallDecision DecidePaywall(const DataSet& data, bool isRedirectToPaywall);

}  // namespace obolo

#endif  // OBOLO_PAYWALL_PAYWALL_DECISION_H_
