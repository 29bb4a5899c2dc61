// A host's observer for tests: keeps every event it hears, and notes any that
// arrived off the main loop.

#ifndef OBOLO_TESTS_SUPPORT_EVENT_RECORDER_H_
#define OBOLO_TESTS_SUPPORT_EVENT_RECORDER_H_

#include <functional>
#include <string>
#include <vector>

#include "entry/paywall_observer.h"

namespace obolo::testing {

class EventRecorder : public PaywallObserver {
 public:
  // `also`, when given, runs after each event is kept (an observer that
  // throws, removes itself, ...).
  explicit EventRecorder(std::function<void(const PaywallEvent&)> also = {}) : also_(std::move(also)) {}

  void onPaywallEvent(const PaywallEvent& event) override;

  const std::vector<PaywallEvent>& events() const { return events_; }
  // Describe() of each event, in the order heard.
  std::vector<std::string> described() const;
  // The events' articles, in the order heard.
  std::vector<std::string> articles() const;
  // Events delivered on another thread than the main loop's.
  int offMainThread() const { return offMainThread_; }
  void clear() { events_.clear(); }

 private:
  std::function<void(const PaywallEvent&)> also_;
  std::vector<PaywallEvent> events_;
  int offMainThread_ = 0;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_EVENT_RECORDER_H_
