#include "platform/main_loop.h"

#include <algorithm>
#include <cmath>

namespace obolo {
namespace {

// `from` + `span`, or the clock's last instant when that lies beyond it: the
// clock counts nanoseconds in 64 bits, which a long enough span overflows.
MainLoop::Clock::time_point Later(MainLoop::Clock::time_point from, MainLoop::Seconds span) {
  using Clock = MainLoop::Clock;
  const MainLoop::Seconds room = Clock::time_point::max() - from;
  if (!(span < room)) return Clock::time_point::max();
  return from + std::chrono::duration_cast<Clock::duration>(span);
}

}  // namespace

void Timer::invalidate() {
  valid_ = false;
  block_ = nullptr;  // releases what the block captured, as the platform does
}

MainLoop& MainLoop::main() {
  // Never destroyed: the HTTP session's thread may still post while the
  // process exits.
  static MainLoop* const loop = new MainLoop();
  return *loop;
}

MainLoop::MainLoop() : main_thread_(std::this_thread::get_id()) {}

bool MainLoop::isMainThread() const { return std::this_thread::get_id() == main_thread_; }

void MainLoop::post(Task task) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  work_posted_.notify_all();
}

std::shared_ptr<Timer> MainLoop::scheduleTimer(double interval, Timer::Block block) {
  if (!(interval > kMinimumTimerInterval)) interval = kMinimumTimerInterval;  // also NaN
  interval = std::min(interval, kMaximumTimerInterval);
  auto timer = std::make_shared<Timer>();
  timer->interval_ = interval;
  timer->due_ = Later(now(), Seconds(interval));
  timer->block_ = std::move(block);
  timers_.emplace(std::make_pair(timer->due_, next_sequence_++), timer);
  return timer;
}

MainLoop::Clock::time_point MainLoop::now() const { return virtual_time_ ? virtual_now_ : Clock::now(); }

void MainLoop::useVirtualTime() {
  if (virtual_time_) return;
  virtual_now_ = Clock::now();
  virtual_time_ = true;
}

std::size_t MainLoop::pendingTimerCount() const {
  return static_cast<std::size_t>(std::count_if(timers_.begin(), timers_.end(),
                                                [](const auto& entry) { return entry.second->isValid(); }));
}

void MainLoop::dropInvalidTimers() {
  std::erase_if(timers_, [](const auto& entry) { return !entry.second->isValid(); });
}

std::shared_ptr<Timer> MainLoop::nextTimer() const {
  for (const auto& [key, timer] : timers_) {
    if (timer->isValid()) return timer;
  }
  return nullptr;
}

bool MainLoop::fireNextDueTimer() {
  dropInvalidTimers();
  if (timers_.empty() || timers_.begin()->first.first > now()) return false;
  std::shared_ptr<Timer> timer = timers_.begin()->second;
  timers_.erase(timers_.begin());
  Timer::Block block = std::move(timer->block_);
  timer->block_ = nullptr;
  timer->valid_ = false;
  if (block) block(*timer);
  return true;
}

void MainLoop::addEndOfTurnObserver(Task observer) {
  if (observer) end_of_turn_observers_.push_back(std::move(observer));
}

bool MainLoop::runTurn(const std::function<bool()>* predicate) {
  const bool ran = runTurnWork(predicate);
  if (ran) {
    // By index and by copy: an observer may add another, which then runs from
    // the next turn on.
    for (std::size_t i = 0, count = end_of_turn_observers_.size(); i < count; ++i) {
      const Task observer = end_of_turn_observers_[i];
      observer();
    }
  }
  return ran;
}

bool MainLoop::runTurnWork(const std::function<bool()>* predicate) {
  bool ran = false;
  std::deque<Task> batch;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    batch.swap(tasks_);
  }
  while (!batch.empty()) {
    Task task = std::move(batch.front());
    batch.pop_front();
    task();
    ran = true;
    if (predicate != nullptr && (*predicate)()) {
      // Whatever this turn did not reach goes back in front of later posts.
      std::lock_guard<std::mutex> lock(mutex_);
      for (auto it = batch.rbegin(); it != batch.rend(); ++it) tasks_.push_front(std::move(*it));
      return true;
    }
  }

  // Timers due at the start of the timer phase; ones they schedule wait for a
  // later turn.
  const Clock::time_point horizon = now();
  for (;;) {
    dropInvalidTimers();
    if (timers_.empty() || timers_.begin()->first.first > horizon) break;
    fireNextDueTimer();
    ran = true;
    if (predicate != nullptr && (*predicate)()) return true;
  }
  return ran;
}

bool MainLoop::runUntil(const std::function<bool()>& predicate, Seconds timeout) {
  const Clock::time_point deadline = Later(Clock::now(), std::max(timeout, Seconds(0)));
  for (;;) {
    if (predicate()) return true;
    if (runTurn(&predicate)) continue;
    if (Clock::now() >= deadline) return predicate();

    Clock::time_point wake = deadline;
    if (!virtual_time_) {
      if (auto timer = nextTimer()) wake = std::min(wake, timer->fireDate());
    }
    std::unique_lock<std::mutex> lock(mutex_);
    work_posted_.wait_until(lock, wake, [this] { return !tasks_.empty(); });
  }
}

void MainLoop::runFor(Seconds duration) {
  duration = std::max(duration, Seconds(0));

  if (virtual_time_) {
    const Clock::time_point target = Later(virtual_now_, duration);
    for (;;) {
      while (runTurn(nullptr)) {
      }
      auto timer = nextTimer();
      if (!timer || timer->fireDate() > target) break;
      virtual_now_ = std::max(virtual_now_, timer->fireDate());
    }
    virtual_now_ = std::max(virtual_now_, target);
    return;
  }

  const Clock::time_point deadline = Later(Clock::now(), duration);
  for (;;) {
    const bool ran = runTurn(nullptr);
    if (Clock::now() >= deadline) return;
    if (ran) continue;
    Clock::time_point wake = deadline;
    if (auto timer = nextTimer()) wake = std::min(wake, timer->fireDate());
    std::unique_lock<std::mutex> lock(mutex_);
    work_posted_.wait_until(lock, wake, [this] { return !tasks_.empty(); });
  }
}

}  // namespace obolo
