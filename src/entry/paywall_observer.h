// How a host hears what happens on its paywalls.
//
// A host that wants to count cards shown, logins and purchases implements
// PaywallObserver and registers it, either for every paywall of the process:
//
//   obolo::PaywallObservers::global().add(observer);
//
// or for the paywalls one Obolo loads (Obolo::addObserver). Events go to each
// observer registered in either place, once, however often it is registered.
// Registering changes nothing the reader sees or the service receives; with no
// observer registered anywhere, the kit builds no event and posts nothing.
//
// Delivery: every event is posted to the main loop and delivered there, in a
// later turn, in the order the steps happened, also for steps that happen on
// the HTTP session's thread (a failed call). An observer hears the events
// delivered while it is registered: one removed (by itself, by another
// observer, or from another thread) before an event reaches it does not hear
// it; one added during a delivery hears the next event. An observer that
// throws is written to the log (platform/log.h) and the purchase goes on; one
// that blocks only delays the next deliveries and the main loop.

#ifndef OBOLO_ENTRY_PAYWALL_OBSERVER_H_
#define OBOLO_ENTRY_PAYWALL_OBSERVER_H_

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "entry/paywall_event.h"

namespace obolo {

class PaywallObserver {
 public:
  virtual ~PaywallObserver() = default;
  // Called on the main loop, once per event.
  virtual void onPaywallEvent(const PaywallEvent& event) = 0;
};

// A set of registered observers; each list holds its observers strongly until
// they are removed or the list goes. Every member may be called from any
// thread, also while the list delivers an event.
class PaywallObservers {
 public:
  PaywallObservers() = default;
  ~PaywallObservers();
  PaywallObservers(const PaywallObservers&) = delete;
  PaywallObservers& operator=(const PaywallObservers&) = delete;

  // The observers of every paywall of the process; lives until exit.
  static PaywallObservers& global();

  // True while any list anywhere holds an observer. One relaxed atomic load:
  // the kit's screens ask this before they build an event.
  static bool anyRegistered() noexcept { return registered_.load(std::memory_order_relaxed) != 0; }

  // False, changing nothing, for a null observer or one already in the list.
  bool add(std::shared_ptr<PaywallObserver> observer);
  // False when the observer is not in the list.
  bool remove(const std::shared_ptr<PaywallObserver>& observer);
  bool contains(const PaywallObserver* observer) const;
  bool empty() const;
  // The observers now, in the order they were added.
  std::vector<std::shared_ptr<PaywallObserver>> snapshot() const;

 private:
  // Observers in all lists together.
  static inline std::atomic<std::size_t> registered_{0};

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<PaywallObserver>> observers_;  // guarded by mutex_
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_PAYWALL_OBSERVER_H_
