#include "platform/notification_center.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace obolo {
namespace {

struct Observer {
  std::vector<std::string>* log;
  std::string name;
  void onNotification(const Notification& notification) { log->push_back(name + ":" + notification.name); }
};

TEST(NotificationCenterTest, DeliversInRegistrationOrderToLiveObserversOfThatNameOnly) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto second = std::make_shared<Observer>(Observer{&log, "second"});
  auto other = std::make_shared<Observer>(Observer{&log, "other"});
  auto dropped = std::make_shared<Observer>(Observer{&log, "dropped"});
  auto first = std::make_shared<Observer>(Observer{&log, "first"});
  std::weak_ptr<Observer> watch = dropped;
  center.addObserver(second, &Observer::onNotification, "N");
  center.addObserver(other, &Observer::onNotification, "M");
  center.addObserver(dropped, &Observer::onNotification, "N");
  center.addObserver(first, &Observer::onNotification, "N");

  dropped.reset();
  EXPECT_TRUE(watch.expired()) << "registration must not keep the observer alive";
  center.post("N");
  EXPECT_EQ(log, (std::vector<std::string>{"second:N", "first:N"}));
}

TEST(NotificationCenterTest, RemovedObserversAreNotCalledEvenLaterInTheSamePost) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto a = std::make_shared<Observer>(Observer{&log, "a"});
  auto b = std::make_shared<Observer>(Observer{&log, "b"});
  auto remover = std::make_shared<int>(0);
  center.addObserver(remover, "N", [&](const Notification&) { center.removeObserver(b); });
  center.addObserver(a, &Observer::onNotification, "N");
  center.addObserver(a, &Observer::onNotification, "M");
  center.addObserver(b, &Observer::onNotification, "N");

  center.post("N");
  center.removeObserver(a, "N");
  center.post("N");
  center.post("M");
  EXPECT_EQ(log, (std::vector<std::string>{"a:N", "a:M"}));
}

}  // namespace
}  // namespace obolo
