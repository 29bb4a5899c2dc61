// A wall clock a test sets by hand.

#ifndef OBOLO_TESTS_SUPPORT_FIXED_CLOCK_H_
#define OBOLO_TESTS_SUPPORT_FIXED_CLOCK_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

#include "platform/clock.h"

namespace obolo::testing {

class FixedClock final : public Clock {
 public:
  explicit FixedClock(std::int64_t secondsSince1970) : seconds_(secondsSince1970) {}
  std::chrono::system_clock::time_point now() const override {
    return std::chrono::system_clock::time_point(std::chrono::seconds(seconds_.load()));
  }
  void set(std::int64_t secondsSince1970) { seconds_ = secondsSince1970; }

 private:
  std::atomic<std::int64_t> seconds_;
};

// Installs a FixedClock at a whole second for the test's lifetime.
class ScopedFixedClock {
 public:
  explicit ScopedFixedClock(std::int64_t secondsSince1970)
      : clock_(std::make_shared<FixedClock>(secondsSince1970)) {
    Clock::setShared(clock_);
  }
  ~ScopedFixedClock() { Clock::setShared(nullptr); }
  FixedClock& clock() { return *clock_; }

 private:
  std::shared_ptr<FixedClock> clock_;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_FIXED_CLOCK_H_
