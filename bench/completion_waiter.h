// Lets a benchmark thread wait for a completion that runs on the HTTP
// session's thread.

#ifndef OBOLO_BENCH_COMPLETION_WAITER_H_
#define OBOLO_BENCH_COMPLETION_WAITER_H_

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace obolo::bench {

class CompletionWaiter {
 public:
  // Called once per call, from any thread.
  void signal(bool ok) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      done_ = true;
      ok_ = ok;
    }
    signalled_.notify_one();
  }

  // Waits for the signal and re-arms. False when it did not come in time or
  // reported a failure.
  bool wait(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    const bool came = signalled_.wait_for(lock, timeout, [this] { return done_; });
    const bool ok = came && ok_;
    done_ = false;
    ok_ = false;
    return ok;
  }

 private:
  std::mutex mutex_;
  std::condition_variable signalled_;
  bool done_ = false;
  bool ok_ = false;
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_COMPLETION_WAITER_H_
