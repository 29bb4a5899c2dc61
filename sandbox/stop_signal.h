// Lets server threads wait for a while unless the sandbox stops: a slow
// answer waits on it, and stopping cuts the wait short so stop() never hangs
// on a delay a test set.

#ifndef OBOLO_SANDBOX_STOP_SIGNAL_H_
#define OBOLO_SANDBOX_STOP_SIGNAL_H_

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace obolo::sandbox {

class StopSignal {
 public:
  // Waits `delay`, or less when raise() is called meanwhile or was called
  // since the last lower().
  void waitFor(std::chrono::milliseconds delay);
  void raise();
  void lower();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool raised_ = false;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_STOP_SIGNAL_H_
