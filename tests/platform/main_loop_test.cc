#include "platform/main_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace obolo {
namespace {

using namespace std::chrono_literals;
using Events = std::vector<std::string>;

class MainLoopTest : public ::testing::Test {
 protected:
  MainLoop& loop = MainLoop::main();
};

TEST_F(MainLoopTest, PostedTasksRunLaterOnTheMainThreadInPostingOrder) {
  Events order;
  loop.post([&] { order.push_back("first"); });
  loop.post([&] {
    order.push_back("second");
    loop.post([&] { order.push_back("posted by second"); });
  });
  std::thread([&] {
    EXPECT_FALSE(loop.isMainThread());
    loop.post([&] {
      EXPECT_TRUE(loop.isMainThread());
      order.push_back("from worker");
    });
  }).join();
  EXPECT_TRUE(order.empty()) << "post never runs a task inline";

  ASSERT_TRUE(loop.runUntil([&] { return order.size() == 4; }, 10s));
  EXPECT_EQ(order, (Events{"first", "second", "from worker", "posted by second"}));
}

TEST_F(MainLoopTest, RunUntilWaitsForOtherThreadsWorkWithoutMovingVirtualTime) {
  loop.useVirtualTime();
  const auto start = loop.now();
  bool timer_fired = false;
  loop.scheduleTimer(1.0, [&](Timer&) { timer_fired = true; });
  std::atomic<bool> arrived{false};
  std::thread worker([&] { loop.post([&] { arrived = true; }); });
  EXPECT_TRUE(loop.runUntil([&] { return arrived.load(); }, 10s));
  worker.join();
  EXPECT_EQ(loop.now(), start);
  EXPECT_FALSE(timer_fired) << "not due in virtual time";
  EXPECT_FALSE(loop.runUntil([] { return false; }, 20ms)) << "gives up after its timeout";
}

TEST_F(MainLoopTest, VirtualTimersFireAtTheirDueTimesWithWhatTheyPostBeforeTheNextTimer) {
  loop.useVirtualTime();
  const auto start = loop.now();
  Events events;
  auto log = [&](const std::string& what) {
    events.push_back(what + " at " + std::to_string(std::chrono::duration<double>(loop.now() - start).count()));
  };
  loop.scheduleTimer(5, [&](Timer&) { log("5s"); });
  loop.scheduleTimer(1, [&](Timer&) {
    log("1s a");
    loop.post([&] { log("task from 1s a"); });
    loop.scheduleTimer(1, [&](Timer&) { log("scheduled at 1s"); });
  });
  loop.scheduleTimer(1, [&](Timer&) { log("1s b"); });
  loop.scheduleTimer(1.5, [&](Timer&) { log("1.5s"); });

  loop.advance(1.5s);
  EXPECT_EQ(events, (Events{"1s a at 1.000000", "1s b at 1.000000", "task from 1s a at 1.000000",
                            "1.5s at 1.500000"}));
  loop.advance(8.5s);
  EXPECT_EQ(events.size(), 6u);
  EXPECT_EQ(events[4], "scheduled at 1s at 2.000000");
  EXPECT_EQ(events[5], "5s at 5.000000");
  EXPECT_DOUBLE_EQ(std::chrono::duration<double>(loop.now() - start).count(), 10.0);
  EXPECT_EQ(loop.pendingTimerCount(), 0u);
}

TEST_F(MainLoopTest, ZeroAndNegativeIntervalsAreTheShortestTimer) {
  loop.useVirtualTime();
  int fired = 0;
  for (double interval : {0.0, -3.0, 0.00001}) {
    auto timer = loop.scheduleTimer(interval, [&](Timer&) { ++fired; });
    EXPECT_DOUBLE_EQ(timer->timeInterval(), 0.0001);
  }
  loop.advance(0.00009s);
  EXPECT_EQ(fired, 0);
  loop.advance(0.00001s);
  EXPECT_EQ(fired, 3);
}

TEST_F(MainLoopTest, RealTimeTimerFiresWhileTheLoopRuns) {
  bool fired = false;
  loop.scheduleTimer(0.02, [&](Timer&) { fired = true; });
  EXPECT_FALSE(fired);
  loop.runFor(0.2s);
  EXPECT_TRUE(fired);
}

TEST_F(MainLoopTest, ATimerReleasesWhatItCapturedOnceFiredOrInvalidated) {
  loop.useVirtualTime();
  auto fired_capture = std::make_shared<int>(1);
  auto cancelled_capture = std::make_shared<int>(2);
  std::weak_ptr<int> fired_watch = fired_capture, cancelled_watch = cancelled_capture;
  bool cancelled_fired = false;
  loop.scheduleTimer(1, [fired_capture](Timer&) {});
  auto timer = loop.scheduleTimer(1, [&cancelled_fired, cancelled_capture](Timer&) { cancelled_fired = true; });
  fired_capture.reset();
  cancelled_capture.reset();
  EXPECT_FALSE(cancelled_watch.expired()) << "a pending timer keeps its block alive";
  timer->invalidate();
  EXPECT_TRUE(cancelled_watch.expired());
  loop.advance(2s);
  EXPECT_FALSE(cancelled_fired);
  EXPECT_TRUE(fired_watch.expired());
}

// An interval too long for the clock's nanosecond count (about 292 years)
// must not wrap around into the past and fire at once: it counts as 100 years.
TEST_F(MainLoopTest, IntervalsBeyondAHundredYearsCountAsAHundredYears) {
  loop.useVirtualTime();
  constexpr double kYear = 365.0 * 24 * 3600;
  const double huge[] = {300 * kYear, 1e10, 9.3e18, 1e300, std::numeric_limits<double>::max(),
                         std::numeric_limits<double>::infinity()};
  const auto start = loop.now();
  int fired = 0;
  for (double interval : huge) {
    auto timer = loop.scheduleTimer(interval, [&](Timer&) { ++fired; });
    EXPECT_EQ(timer->timeInterval(), MainLoop::kMaximumTimerInterval) << interval;
    EXPECT_GT(timer->fireDate(), start + std::chrono::hours(24 * 365 * 99)) << interval;
  }
  bool fiftyYears = false;
  loop.scheduleTimer(50 * kYear, [&](Timer& timer) {
    fiftyYears = true;
    EXPECT_EQ(timer.timeInterval(), 50 * kYear);
  });
  loop.advance(24h);
  EXPECT_EQ(fired, 0) << "nothing fires on the first day";
  loop.advance(std::chrono::duration<double>(50 * kYear));
  EXPECT_TRUE(fiftyYears);
  EXPECT_EQ(fired, 0);
  loop.advance(std::chrono::duration<double>(50 * kYear));
  EXPECT_EQ(fired, 6) << "they do fire, a hundred years on";
}

}  // namespace
}  // namespace obolo
