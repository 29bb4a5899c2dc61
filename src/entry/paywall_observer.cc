#include "entry/paywall_observer.h"

#include <algorithm>
#include <utility>

#include "platform/no_destructor.h"

namespace obolo {

PaywallObservers::~PaywallObservers() {
  std::lock_guard<std::mutex> lock(mutex_);
  registered_.fetch_sub(observers_.size(), std::memory_order_relaxed);
}

PaywallObservers& PaywallObservers::global() {
  // Never destroyed: a delivery may still run while the process exits.
  static NoDestructor<PaywallObservers> observers;
  return *observers;
}

bool PaywallObservers::add(std::shared_ptr<PaywallObserver> observer) {
  if (!observer) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  if (std::find(observers_.begin(), observers_.end(), observer) != observers_.end()) return false;
  observers_.push_back(std::move(observer));
  registered_.fetch_add(1, std::memory_order_relaxed);
  return true;
}

bool PaywallObservers::remove(const std::shared_ptr<PaywallObserver>& observer) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = std::find(observers_.begin(), observers_.end(), observer);
  if (found == observers_.end()) return false;
  observers_.erase(found);
  registered_.fetch_sub(1, std::memory_order_relaxed);
  return true;
}

bool PaywallObservers::contains(const PaywallObserver* observer) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::any_of(observers_.begin(), observers_.end(),
                     [observer](const auto& registered) { return registered.get() == observer; });
}

bool PaywallObservers::empty() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return observers_.empty();
}

std::vector<std::shared_ptr<PaywallObserver>> PaywallObservers::snapshot() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return observers_;
}

}  // namespace obolo
