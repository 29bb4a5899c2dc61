// What happens on a paywall, as a host's observer hears it
// (entry/paywall_observer.h).
//
// One event per step of a purchase, for a publisher's analytics: how often the
// card was shown, how many readers went to the login page, how many paid. Each
// event carries the article of the screen it happened on and the few facts of
// its kind, nothing else. No event carries a token, a device key, a login key
// or an e-mail: the kit never puts one in, and the two texts that come from
// the service (a price, a failure text) reach an observer with anything that
// looks like a credential masked (entry/credential_mask.h).

#ifndef OBOLO_ENTRY_PAYWALL_EVENT_H_
#define OBOLO_ENTRY_PAYWALL_EVENT_H_

#include <ostream>
#include <string>
#include <string_view>

#include "entry/position.h"

namespace obolo {

enum class PaywallEventKind {
  notApplicable,      // the bid says the paywall does not apply: the article stays readable
  cardShown,          // the card offers the article: priceText, position
  unlockTapped,       // consent: whether the consent box was ticked; without it nothing follows
  loginOpened,        // the web login screen opened for a reader without a session
  loginCompleted,     // the login page handed back its keys and the login screen closed
  loginClosed,        // the reader left the login screen with Done, without logging in
  articleRevealed,    // paidNow: paid by this tap (true) or paid for before (false)
  walletOpened,       // the floating wallet button opened the wallet screen
  logout,             // the service confirmed a logout from the wallet; the session is cleared
  serviceCallFailed,  // call, failureText: an answer the kit could not use
};

// The service's calls, by the names the kit's API client gives them.
enum class ServiceCall {
  createLoggedOutBid,
  createLoggedInBid,
  customerBid,
  getNextAccessToken,
  acceptBid,
  getBalanceAndArticles,
  logout,
};

// A value: observers may keep, copy and compare events. Members that a kind
// does not carry keep their defaults.
struct PaywallEvent {
  // Which step of the purchase happened.
  PaywallEventKind kind = PaywallEventKind::notApplicable;
  // The address given to the Obolo that loaded the paywall. Wallet events
  // carry the article of the paywall that put the wallet button on the host
  // screen; empty for a button the host added itself.
  std::string articleUrl{};
  // cardShown: the price as the card shows it, formatted by the service.
  std::string priceText{};
  // cardShown: where the card sits over the article.
  Position position = Position::center;
  // unlockTapped: whether the reader had given consent.
  bool consent = false;
  // articleRevealed: true when this purchase paid for it, false when the
  // service reported it paid for already.
  bool paidNow = false;
  // serviceCallFailed: which call, and the kit's failure text (a decoding
  // sentence, or the message of a logged-in bid the service refused).
  ServiceCall call = ServiceCall::createLoggedOutBid;
  std::string failureText{};

  friend bool operator==(const PaywallEvent&, const PaywallEvent&) = default;
};

// "card shown", "article revealed", ... as a host would label a counter.
std::string_view ToString(PaywallEventKind kind);
// "createLoggedOutBid", "acceptBid", ...
std::string_view ToString(ServiceCall call);
// "top", "center", "bottom".
std::string_view ToString(Position position);

// One line with the kind and the facts it carries (not the article), e.g.
// `card shown, price "EUR 0.50", at bottom` or `acceptBid failed: "..."`.
std::string Describe(const PaywallEvent& event);

// For test expectations.
inline void PrintTo(const PaywallEvent& event, std::ostream* out) {
  *out << Describe(event) << " [" << event.articleUrl << "]";
}

}  // namespace obolo

#endif  // OBOLO_ENTRY_PAYWALL_EVENT_H_
