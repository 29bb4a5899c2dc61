#include "platform/clock.h"
#include "platform/no_destructor.h"

#include <mutex>

namespace obolo {
namespace {

class SystemClock final : public Clock {
 public:
  std::chrono::system_clock::time_point now() const override { return std::chrono::system_clock::now(); }
};

std::mutex& ClockMutex() {
  static NoDestructor<std::mutex> mutex;
  return *mutex;
}

std::shared_ptr<Clock>& Installed() {
  static NoDestructor<std::shared_ptr<Clock>> clock;
  return *clock;
}

}  // namespace

std::shared_ptr<Clock> Clock::shared() {
  std::lock_guard<std::mutex> lock(ClockMutex());
  auto& clock = Installed();
  if (!clock) clock = std::make_shared<SystemClock>();
  return clock;
}

void Clock::setShared(std::shared_ptr<Clock> clock) {
  std::lock_guard<std::mutex> lock(ClockMutex());
  Installed() = std::move(clock);
}

}  // namespace obolo
