#include "sandbox/stop_signal.h"

namespace obolo::sandbox {

void StopSignal::waitFor(std::chrono::milliseconds delay) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, delay, [this] { return raised_; });
}

void StopSignal::raise() {
  {
    std::lock_guard lock(mutex_);
    raised_ = true;
  }
  changed_.notify_all();
}

void StopSignal::lower() {
  std::lock_guard lock(mutex_);
  raised_ = false;
}

}  // namespace obolo::sandbox
