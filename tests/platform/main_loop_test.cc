#include "platform/main_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace obolo {
namespace {

using namespace std::chrono_literals;

class MainLoopTest : public ::testing::Test {
 protected:
  MainLoop& loop = MainLoop::main();
};

TEST_F(MainLoopTest, PostedTasksRunLaterOnTheMainThreadInPostingOrder) {
  std::vector<std::string> order;
  std::atomic<bool> posted_from_thread{false};
  loop.post([&] { order.push_back("first"); });
  loop.post([&] {
    order.push_back("second");
    loop.post([&] { order.push_back("posted by second"); });
  });
  std::thread worker([&] {
    loop.post([&] {
      EXPECT_TRUE(loop.isMainThread());
      order.push_back("from worker");
    });
    posted_from_thread = true;
  });
  worker.join();
  EXPECT_TRUE(order.empty()) << "post never runs a task inline";

  ASSERT_TRUE(loop.runUntil([&] { return order.size() == 4; }, 10s));
  EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "from worker", "posted by second"}));
}

TEST_F(MainLoopTest, IsMainThreadOnlyOnTheThreadThatFirstUsedTheLoop) {
  EXPECT_TRUE(loop.isMainThread());
  bool on_worker = true;
  std::thread([&] { on_worker = loop.isMainThread(); }).join();
  EXPECT_FALSE(on_worker);
}

TEST_F(MainLoopTest, RunUntilWaitsForWorkPostedByAnotherThreadWithoutMovingVirtualTime) {
  loop.useVirtualTime();
  const auto start = loop.now();
  bool timer_fired = false;
  loop.scheduleTimer(1.0, [&](Timer&) { timer_fired = true; });
  std::atomic<bool> arrived{false};
  std::thread worker([&] { loop.post([&] { arrived = true; }); });

  EXPECT_TRUE(loop.runUntil([&] { return arrived.load(); }, 10s));
  worker.join();
  EXPECT_EQ(loop.now(), start);
  EXPECT_FALSE(timer_fired) << "runUntil must not fire a timer that is not due in virtual time";
}

TEST_F(MainLoopTest, RunUntilGivesUpAfterItsTimeout) {
  loop.useVirtualTime();
  EXPECT_FALSE(loop.runUntil([] { return false; }, 20ms));
}

TEST_F(MainLoopTest, VirtualTimersFireInDueOrderAndFifoForEqualTimes) {
  loop.useVirtualTime();
  std::vector<std::string> fired;
  loop.scheduleTimer(5, [&](Timer&) { fired.push_back("5s"); });
  loop.scheduleTimer(1, [&](Timer&) { fired.push_back("1s a"); });
  loop.scheduleTimer(1, [&](Timer&) { fired.push_back("1s b"); });
  loop.scheduleTimer(3, [&](Timer&) { fired.push_back("3s"); });

  loop.advance(2s);
  EXPECT_EQ(fired, (std::vector<std::string>{"1s a", "1s b"}));
  loop.advance(3s);
  EXPECT_EQ(fired, (std::vector<std::string>{"1s a", "1s b", "3s", "5s"}));
  EXPECT_EQ(loop.pendingTimerCount(), 0u);
}

TEST_F(MainLoopTest, AdvanceRunsWhatATimerPostsBeforeTheNextTimerAndEndsAtTheTarget) {
  loop.useVirtualTime();
  const auto start = loop.now();
  std::vector<std::string> events;
  std::vector<double> seconds_at;
  auto elapsed = [&] { return std::chrono::duration<double>(loop.now() - start).count(); };
  loop.scheduleTimer(1, [&](Timer&) {
    seconds_at.push_back(elapsed());
    events.push_back("timer 1");
    loop.post([&] { events.push_back("task from timer 1"); });
    loop.scheduleTimer(1, [&](Timer&) {
      seconds_at.push_back(elapsed());
      events.push_back("timer scheduled at 1s");
    });
  });
  loop.scheduleTimer(1.5, [&](Timer&) {
    seconds_at.push_back(elapsed());
    events.push_back("timer 1.5");
  });

  loop.advance(10s);
  EXPECT_EQ(events,
            (std::vector<std::string>{"timer 1", "task from timer 1", "timer 1.5", "timer scheduled at 1s"}));
  ASSERT_EQ(seconds_at.size(), 3u);
  EXPECT_DOUBLE_EQ(seconds_at[0], 1.0);
  EXPECT_DOUBLE_EQ(seconds_at[1], 1.5);
  EXPECT_DOUBLE_EQ(seconds_at[2], 2.0);
  EXPECT_DOUBLE_EQ(elapsed(), 10.0);
}

TEST_F(MainLoopTest, ZeroAndNegativeIntervalsAreTheShortestTimerAndFireAlmostAtOnce) {
  loop.useVirtualTime();
  std::vector<double> intervals;
  for (double interval : {0.0, -3.0, 0.00001}) {
    auto timer = loop.scheduleTimer(interval, [&](Timer& t) { intervals.push_back(t.timeInterval()); });
    EXPECT_DOUBLE_EQ(timer->timeInterval(), 0.0001);
  }
  loop.advance(0.00009s);
  EXPECT_TRUE(intervals.empty());
  loop.advance(0.00001s);
  EXPECT_EQ(intervals, (std::vector<double>{0.0001, 0.0001, 0.0001}));
}

TEST_F(MainLoopTest, RealTimeTimerFiresWhileTheLoopRuns) {
  bool fired = false;
  loop.scheduleTimer(0, [&](Timer&) { fired = true; });
  EXPECT_FALSE(fired);
  EXPECT_TRUE(loop.runUntil([&] { return fired; }, 10s));

  bool later = false;
  loop.scheduleTimer(0.02, [&](Timer&) { later = true; });
  loop.runFor(0.2s);
  EXPECT_TRUE(later);
}

TEST_F(MainLoopTest, InvalidatedTimerNeverFiresAndReleasesWhatItCaptured) {
  loop.useVirtualTime();
  auto captured = std::make_shared<int>(1);
  std::weak_ptr<int> watch = captured;
  bool fired = false;
  auto timer = loop.scheduleTimer(1, [&fired, captured](Timer&) { fired = true; });
  captured.reset();
  EXPECT_FALSE(watch.expired()) << "a pending timer keeps its block alive";
  timer->invalidate();
  EXPECT_TRUE(watch.expired());
  loop.advance(2s);
  EXPECT_FALSE(fired);
  EXPECT_FALSE(timer->isValid());
}

TEST_F(MainLoopTest, FiredTimerReleasesItsBlock) {
  loop.useVirtualTime();
  auto captured = std::make_shared<int>(1);
  std::weak_ptr<int> watch = captured;
  loop.scheduleTimer(1, [captured](Timer&) {});
  captured.reset();
  loop.advance(1s);
  EXPECT_TRUE(watch.expired());
}

}  // namespace
}  // namespace obolo
