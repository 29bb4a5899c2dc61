// Catches what an asynchronous service call reports, for tests that wait on it
// from the test's thread.

#ifndef OBOLO_TESTS_SUPPORT_CALL_PROBE_H_
#define OBOLO_TESTS_SUPPORT_CALL_PROBE_H_

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "network/network_manager.h"
#include "platform/http_session.h"

namespace obolo::testing {

// Hands out a completion and an onFailure closure and records which ran, with
// what, how often and on which thread. The closures share the probe's state,
// so they stay safe to call after the probe is gone.
template <class Envelope>
class CallProbe {
 public:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Envelope> envelope;
    std::optional<std::string> failure;
    int calls = 0;
    std::thread::id thread;
    bool onSessionThread = false;
  };

  Completion<Envelope> completion() {
    return [state = state_](Envelope envelope) {
      std::lock_guard<std::mutex> lock(state->mutex);
      state->envelope = std::move(envelope);
      Note(*state);
    };
  }

  OnFailure onFailure() {
    return [state = state_](std::string failure) {
      std::lock_guard<std::mutex> lock(state->mutex);
      state->failure = std::move(failure);
      Note(*state);
    };
  }

  // True once either closure ran; waits at most `timeout`.
  bool wait(std::chrono::milliseconds timeout = std::chrono::seconds(15)) {
    std::unique_lock<std::mutex> lock(state_->mutex);
    return state_->changed.wait_for(lock, timeout, [&] { return state_->calls > 0; });
  }

  std::optional<Envelope> envelope() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->envelope;
  }
  std::optional<std::string> failure() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->failure;
  }
  int calls() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->calls;
  }
  std::thread::id thread() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->thread;
  }
  bool ranOnSessionThread() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->onSessionThread;
  }

 private:
  static void Note(State& state) {
    ++state.calls;
    state.thread = std::this_thread::get_id();
    state.onSessionThread = IsHttpSessionThread();
    state.changed.notify_all();
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

// Installs, for its lifetime, a session that forwards every transfer to the
// real libcurl session and counts transfers whose handler has returned. A test
// can then tell "the answer came and nothing was called back" from "the answer
// has not come yet". It also keeps the requests as the kit built them, header
// texts exactly as set (the server side trims trailing spaces).
class TransferObserver {
 public:
  TransferObserver();
  ~TransferObserver();
  TransferObserver(const TransferObserver&) = delete;
  TransferObserver& operator=(const TransferObserver&) = delete;

  // Waits until `count` transfers have been handled in all.
  bool waitForHandled(int count, std::chrono::milliseconds timeout = std::chrono::seconds(15));
  int handled() const;
  std::vector<HttpRequest> requests() const;

 private:
  class Session;
  std::shared_ptr<Session> session_;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_CALL_PROBE_H_
