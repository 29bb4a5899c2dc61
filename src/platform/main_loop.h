// The main thread's event loop: the main queue's asynchronous dispatch and the
// main run loop's one-shot timers, in one object.
//
// Everything that touches views or screen state runs here. Other threads (the
// HTTP session's completions) hand work over with post(); nothing else of the
// loop may be used off the main thread.
//
// Nothing drives the loop by itself: a host (or a test) runs it with runFor()
// or runUntil() on the main thread. Within one turn the loop first runs the
// tasks that were posted before the turn began, in posting order, then the
// timers that are due, in order of due time (and of scheduling for equal due
// times). A task or timer may post more work or schedule more timers; they run
// in a later turn.
//
// Time. The loop reads its time from a clock that is real (steady) time by
// default. A test can switch it to virtual time with useVirtualTime():
//   - advance(d) / runFor(d) run the work that is ready, then move virtual time
//     forward timer by timer up to now + d, firing each timer at its due time
//     and running the tasks it posts before the next timer fires. Nothing waits
//     in real time: a 5-second timer fires at once, at virtual 5 s.
//   - runUntil(predicate, timeout) never moves virtual time. It runs ready work
//     and waits, in real time and on a condition variable, for work posted from
//     other threads (a network completion, say), until the predicate holds or
//     the real timeout passes.
// In real time, runFor(d) runs the loop for d of real time and runUntil waits
// for timers as well as posted work; advance(d) is runFor(d).
// The loop never sleeps: it always waits on a condition variable that post()
// signals.

#ifndef OBOLO_PLATFORM_MAIN_LOOP_H_
#define OBOLO_PLATFORM_MAIN_LOOP_H_

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace obolo {

class MainLoop;

// A one-shot timer on the main loop. The loop keeps it, and so its block and
// whatever the block captures, until it has fired or was invalidated.
class Timer {
 public:
  // The loop's clock, and what a timer runs when it fires (given the timer).
  using Clock = std::chrono::steady_clock;
  using Block = std::function<void(Timer&)>;

  // The interval the timer was scheduled with, after the platform's rule that
  // an interval of zero or less counts as 0.1 ms (0.0001 s).
  double timeInterval() const { return interval_; }
  // When the timer fires, on the loop's clock.
  Clock::time_point fireDate() const { return due_; }
  // True until the timer has fired or was invalidated. Main thread only.
  bool isValid() const { return valid_; }
  // Stops a timer that has not fired yet and releases its block.
  void invalidate();

 private:
  friend class MainLoop;
  double interval_ = 0;
  Clock::time_point due_;
  bool valid_ = true;
  Block block_;
};

class MainLoop {
 public:
  // Work posted to the loop; the loop's clock; durations in seconds.
  using Task = std::function<void()>;
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;

  // The intervals below this count as this: the platform's smallest timer.
  static constexpr double kMinimumTimerInterval = 0.0001;
  // The intervals above this (and +infinity) count as this: 100 years, so the
  // due time stays inside the clock's range (a nanosecond count overflows at
  // about 292 years) and such a timer never fires in a process's lifetime.
  static constexpr double kMaximumTimerInterval = 100.0 * 365 * 24 * 3600;

  // The process's loop, created on first use. The thread of that first use is
  // the main thread: call it from the process's main thread before other
  // threads start posting. The loop is never destroyed, so threads still
  // running at exit may post safely.
  static MainLoop& main();

  // True on the main thread. Callable from any thread.
  bool isMainThread() const;

  // Queues `task` to run on the main thread in a later turn, after every task
  // posted before it. Callable from any thread; never runs `task` inline.
  void post(Task task);

  // Schedules `block` to run once on the main thread, `interval` seconds from
  // now (an interval of zero or less, or NaN, counts as 0.1 ms; one beyond
  // kMaximumTimerInterval counts as that). Timers due at
  // the same time fire in the order they were scheduled. The returned timer can
  // be read or invalidated; the loop keeps it until it fires.
  std::shared_ptr<Timer> scheduleTimer(double interval, Timer::Block block);

  // Runs the loop until `predicate` holds (true) or `timeout` of real time has
  // passed (false). The predicate is checked before any work, after each task
  // and timer, and at the timeout: a condition that another thread changes
  // without posting to the loop is noticed only then. In virtual time, timers
  // fire only when due at the current virtual time, which this never moves.
  bool runUntil(const std::function<bool()>& predicate, Seconds timeout);

  // Runs the loop for `duration` (see the header comment for virtual time).
  void runFor(Seconds duration);
  // The same as runFor; reads better in tests that use virtual time.
  void advance(Seconds duration) { runFor(duration); }

  // Switches the loop's clock to virtual time, starting at the current real
  // time, so timers already scheduled keep their due times. Main thread only.
  void useVirtualTime();
  bool usesVirtualTime() const { return virtual_time_; }

  // The loop's current time: virtual or real.
  Clock::time_point now() const;

  // Timers that have neither fired nor been invalidated.
  std::size_t pendingTimerCount() const;

  // Adds `observer`, to run on the main thread at the end of every turn that
  // ran any work, also when runUntil() stops in the middle of a turn because
  // its predicate holds: the platform's before-waiting run-loop observer, which
  // the toolkit's layout pass uses. Work an observer posts runs in a later
  // turn. Observers stay for the process's life. Main thread only.
  void addEndOfTurnObserver(Task observer);

 private:
  MainLoop();

  // Runs one turn: the tasks posted before it, then the due timers. Returns
  // whether anything ran; stops early (returning true) once `predicate` holds.
  bool runTurn(const std::function<bool()>* predicate);
  bool runTurnWork(const std::function<bool()>* predicate);
  bool fireNextDueTimer();
  std::shared_ptr<Timer> nextTimer() const;
  void dropInvalidTimers();

  const std::thread::id main_thread_;

  mutable std::mutex mutex_;
  std::condition_variable work_posted_;
  std::deque<Task> tasks_;  // guarded by mutex_

  // Main thread only. Keyed by (due time, scheduling sequence): firing order.
  std::map<std::pair<Clock::time_point, std::uint64_t>, std::shared_ptr<Timer>> timers_;
  std::uint64_t next_sequence_ = 0;
  bool virtual_time_ = false;
  Clock::time_point virtual_now_;
  std::vector<Task> end_of_turn_observers_;  // main thread only
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_MAIN_LOOP_H_
