// How the kit's screens tell a host's observers what happened
// (entry/paywall_observer.h).
//
// A paywall gets a reporter from the Obolo that loaded it: that Obolo's
// observers and its article. The paywall hands its reporter on to the host
// screen when it adds the wallet button, so the wallet's events reach the same
// observers. A reporter made without an Obolo reaches the global observers
// only.
//
// Every emit point asks listening() before it builds an event:
//
//   if (reporter.listening()) reporter.report({.kind = PaywallEventKind::loginOpened});
//
// With no observer registered anywhere that is one relaxed atomic load and
// nothing else: no event, no allocation, no post to the main loop.
//
// Threads: listening() and report() may be called from any thread; events are
// delivered on the main loop, in the order report() was called.

#ifndef OBOLO_ENTRY_PAYWALL_REPORTER_H_
#define OBOLO_ENTRY_PAYWALL_REPORTER_H_

#include <memory>
#include <string>

#include "entry/paywall_event.h"
#include "entry/paywall_observer.h"
#include "toolkit/ns_object.h"

namespace obolo {

class PaywallReporter {
 public:
  // The global observers only, no article.
  PaywallReporter() = default;
  // `observers` (may be null) as well as the global ones; events carry
  // `articleUrl`.
  PaywallReporter(std::shared_ptr<PaywallObservers> observers, std::string articleUrl);

  // False when no observer is registered anywhere; true means one may be
  // listening to this reporter.
  bool listening() const noexcept { return PaywallObservers::anyRegistered(); }

  // Stamps the article on `event`, masks the texts that came from the service
  // (entry/credential_mask.h) against the stored session, and posts the event
  // to the main loop for every observer of this reporter. Does nothing when
  // none is registered now.
  void report(PaywallEvent event) const;

  const std::string& articleUrl() const { return articleUrl_; }

 private:
  bool anyObserver() const;

  std::shared_ptr<PaywallObservers> observers_;
  std::string articleUrl_;
};

// Keeps `reporter` with `object` (a host screen), for the screens opened from
// it later: the wallet button's tap reports through it.
void AttachReporter(NSObject& object, PaywallReporter reporter);
// The reporter attached to `object`, or one for the global observers only.
PaywallReporter AttachedReporter(const NSObject& object);

}  // namespace obolo

#endif  // OBOLO_ENTRY_PAYWALL_REPORTER_H_
