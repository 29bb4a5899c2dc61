// How events reach a host's observers: on the main loop, in order, once per
// observer, and safely whatever an observer does while it is called.

#include "entry/paywall_observer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "entry/paywall_reporter.h"
#include "platform/main_loop.h"
#include "support/event_recorder.h"
#include "support/log_capture.h"
#include "support/temporary_store.h"
#include "toolkit/ns_object.h"

namespace obolo {
namespace {

using testing::EventRecorder;
using Lines = std::vector<std::string>;

constexpr char kArticle[] = "https://news.example/politics/city-budget-vote";

PaywallEvent Event(PaywallEventKind kind) { return PaywallEvent{.kind = kind}; }

class PaywallObserverTest : public ::testing::Test {
 protected:
  PaywallObserverTest() { MainLoop::main().useVirtualTime(); }
  ~PaywallObserverTest() override {
    for (const auto& observer : PaywallObservers::global().snapshot())
      PaywallObservers::global().remove(observer);
  }

  static void Deliver() { MainLoop::main().runFor(std::chrono::seconds(0)); }

  testing::TemporaryStore store_;  // failure texts are masked against it
  std::shared_ptr<PaywallObservers> own_ = std::make_shared<PaywallObservers>();
  PaywallReporter reporter_{own_, kArticle};
};

TEST_F(PaywallObserverTest, EventsArriveOnTheMainLoopInTheOrderTheyWereReported) {
  auto recorder = std::make_shared<EventRecorder>();
  own_->add(recorder);
  reporter_.report(Event(PaywallEventKind::unlockTapped));
  std::thread sessionThread([&] {
    reporter_.report({.kind = PaywallEventKind::serviceCallFailed,
                      .call = ServiceCall::customerBid,
                      .failureText = "The data couldn't be read because it isn't valid JSON."});
    reporter_.report(Event(PaywallEventKind::loginClosed));
  });
  sessionThread.join();
  reporter_.report(Event(PaywallEventKind::cardShown));
  EXPECT_TRUE(recorder->events().empty()) << "never called from inside the step itself";

  Deliver();
  EXPECT_EQ(recorder->described(),
            (Lines{"unlock tapped, no consent",
                   "customerBid failed: \"The data couldn't be read because it isn't valid JSON.\"",
                   "login closed with Done", "card shown, price \"\", at center"}));
  EXPECT_EQ(recorder->articles(), Lines(4, kArticle));
  EXPECT_EQ(recorder->offMainThread(), 0);
}

TEST_F(PaywallObserverTest, WhatOneObserverDoesWhileCalledCannotStopTheOthers) {
  struct Row {
    const char* name;
    // What the first observer does on each event; it gets the second and a
    // third, unregistered observer.
    std::function<void(PaywallObserver& self, const std::shared_ptr<PaywallObserver>& second,
                       const std::shared_ptr<PaywallObserver>& third)>
        act;
    std::size_t firstHears, secondHears, thirdHears;
    Lines log;
  };
  const std::vector<Row> rows = {
      {"throws an exception", [](auto&, auto&, auto&) { throw std::runtime_error("counter overflow"); }, 2, 2,
       0,
       Lines{"A paywall observer threw on \"login opened\": counter overflow",
             "A paywall observer threw on \"login completed\": counter overflow"}},
      {"throws something else", [](auto&, auto&, auto&) { throw 42; }, 2, 2, 0,
       Lines{"A paywall observer threw on \"login opened\"",
             "A paywall observer threw on \"login completed\""}},
      {"removes itself",
       [this](PaywallObserver& self, auto&, auto&) {
         for (const auto& o : own_->snapshot()) {
           if (o.get() == &self) own_->remove(o);
         }
       },
       1, 2, 0, Lines{}},
      {"removes the next observer", [this](auto&, auto& second, auto&) { own_->remove(second); }, 2, 0, 0,
       Lines{}},
      {"adds another observer", [this](auto&, auto&, auto& third) { own_->add(third); }, 2, 2, 1, Lines{}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    testing::LogCapture log;
    auto second = std::make_shared<EventRecorder>();
    auto third = std::make_shared<EventRecorder>();
    std::shared_ptr<EventRecorder> first;
    first = std::make_shared<EventRecorder>([&](const PaywallEvent&) { row.act(*first, second, third); });
    own_->add(first);
    own_->add(second);

    reporter_.report(Event(PaywallEventKind::loginOpened));
    reporter_.report(Event(PaywallEventKind::loginCompleted));
    Deliver();
    EXPECT_EQ(first->events().size(), row.firstHears);
    EXPECT_EQ(second->events().size(), row.secondHears);
    EXPECT_EQ(third->events().size(), row.thirdHears);
    EXPECT_EQ(log.lines(), row.log);
    for (const auto& observer : own_->snapshot()) own_->remove(observer);
  }
}

TEST_F(PaywallObserverTest, AnObserverHearsEachEventOnceHoweverOftenItIsRegistered) {
  auto recorder = std::make_shared<EventRecorder>();
  EXPECT_TRUE(PaywallObservers::global().add(recorder));
  EXPECT_FALSE(PaywallObservers::global().add(recorder));
  EXPECT_TRUE(own_->add(recorder));
  reporter_.report(Event(PaywallEventKind::walletOpened));
  Deliver();
  EXPECT_EQ(recorder->described(), Lines{"wallet opened"});

  // One removal from the global list leaves it registered with the paywall.
  EXPECT_TRUE(PaywallObservers::global().remove(recorder));
  EXPECT_FALSE(PaywallObservers::global().remove(recorder));
  reporter_.report(Event(PaywallEventKind::logout));
  Deliver();
  EXPECT_EQ(recorder->described(), (Lines{"wallet opened", "logout"}));

  EXPECT_TRUE(own_->remove(recorder));
  reporter_.report(Event(PaywallEventKind::cardShown));
  Deliver();
  EXPECT_EQ(recorder->events().size(), 2u);
}

TEST_F(PaywallObserverTest, AnObserverRemovedBeforeDeliveryDoesNotHearWhatWasReportedEarlier) {
  auto removed = std::make_shared<EventRecorder>();
  auto kept = std::make_shared<EventRecorder>();
  PaywallObservers::global().add(removed);
  PaywallObservers::global().add(kept);
  reporter_.report(Event(PaywallEventKind::notApplicable));
  PaywallObservers::global().remove(removed);
  Deliver();
  EXPECT_TRUE(removed->events().empty());
  EXPECT_EQ(kept->described(), Lines{"not applicable"});
}

TEST_F(PaywallObserverTest, EachReporterReachesItsOwnListAndTheGlobalOneOnly) {
  auto global = std::make_shared<EventRecorder>();
  auto mine = std::make_shared<EventRecorder>();
  auto theirs = std::make_shared<EventRecorder>();
  PaywallObservers::global().add(global);
  own_->add(mine);
  auto other = std::make_shared<PaywallObservers>();
  other->add(theirs);
  const PaywallReporter otherReporter(other, "https://news.example/business/morning-briefing");

  reporter_.report(Event(PaywallEventKind::loginOpened));
  otherReporter.report(Event(PaywallEventKind::notApplicable));
  PaywallReporter().report(Event(PaywallEventKind::walletOpened));  // no Obolo: global only, no article
  Deliver();
  EXPECT_EQ(global->described(), (Lines{"login opened", "not applicable", "wallet opened"}));
  EXPECT_EQ(global->articles(), (Lines{kArticle, "https://news.example/business/morning-briefing", ""}));
  EXPECT_EQ(mine->described(), Lines{"login opened"});
  EXPECT_EQ(theirs->described(), Lines{"not applicable"});
}

TEST_F(PaywallObserverTest, NobodyListensUntilAnObserverIsRegisteredSomewhere) {
  auto recorder = std::make_shared<EventRecorder>();
  EXPECT_FALSE(reporter_.listening());
  {
    auto elsewhere = std::make_shared<PaywallObservers>();
    elsewhere->add(recorder);
    EXPECT_TRUE(reporter_.listening()) << "someone may be listening";
    // A list that goes with its observers takes them off the count.
  }
  EXPECT_FALSE(reporter_.listening());
  PaywallObservers::global().add(recorder);
  EXPECT_TRUE(PaywallReporter().listening());
  PaywallObservers::global().remove(recorder);
  EXPECT_FALSE(PaywallReporter().listening());
  // Nothing registered: a report builds nothing and delivers nothing, even to
  // an observer registered before the loop turns.
  reporter_.report(Event(PaywallEventKind::logout));
  own_->add(recorder);
  Deliver();
  EXPECT_TRUE(recorder->events().empty());
}

TEST_F(PaywallObserverTest, AScreenCarriesTheReporterAttachedToIt) {
  auto recorder = std::make_shared<EventRecorder>();
  own_->add(recorder);
  auto screen = std::make_shared<NSObject>();
  EXPECT_EQ(AttachedReporter(*screen).articleUrl(), "");
  AttachReporter(*screen, reporter_);
  const PaywallReporter attached = AttachedReporter(*screen);
  EXPECT_EQ(attached.articleUrl(), kArticle);
  attached.report(Event(PaywallEventKind::walletOpened));
  Deliver();
  EXPECT_EQ(recorder->described(), Lines{"wallet opened"});
}

}  // namespace
}  // namespace obolo
