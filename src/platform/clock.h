// The wall clock the kit reads when it judges a token's expiry.
//
// Replaceable so that tests can pin "now" to a whole second and check the
// one-minute rule at its exact boundaries.

#ifndef OBOLO_PLATFORM_CLOCK_H_
#define OBOLO_PLATFORM_CLOCK_H_

#include <chrono>
#include <memory>

namespace obolo {

class Clock {
 public:
  virtual ~Clock() = default;
  // The current time; callable from any thread.
  virtual std::chrono::system_clock::time_point now() const = 0;

  // The clock in force: the system clock unless another was installed.
  static std::shared_ptr<Clock> shared();
  // Installs the clock shared() returns; nullptr restores the system clock.
  static void setShared(std::shared_ptr<Clock> clock);
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_CLOCK_H_
