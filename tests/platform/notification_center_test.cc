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

TEST(NotificationCenterTest, DeliversSynchronouslyInRegistrationOrderToObserversOfThatName) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto first = std::make_shared<Observer>(Observer{&log, "first"});
  auto second = std::make_shared<Observer>(Observer{&log, "second"});
  auto other = std::make_shared<Observer>(Observer{&log, "other"});
  center.addObserver(second, &Observer::onNotification, "NotificationIdentifier");
  center.addObserver(other, &Observer::onNotification, "SomethingElse");
  center.addObserver(first, &Observer::onNotification, "NotificationIdentifier");

  center.post("NotificationIdentifier");
  EXPECT_EQ(log, (std::vector<std::string>{"second:NotificationIdentifier", "first:NotificationIdentifier"}));
}

TEST(NotificationCenterTest, CarriesObjectAndUserInfo) {
  NotificationCenter center;
  auto owner = std::make_shared<int>(0);
  int sender_value = 0;
  std::string reason;
  center.addObserver(owner, "Changed", [&](const Notification& n) {
    sender_value = std::any_cast<int>(n.object);
    reason = std::any_cast<std::string>(n.userInfo.at("reason"));
  });
  center.post("Changed", 42, {{"reason", std::string("logout")}});
  EXPECT_EQ(sender_value, 42);
  EXPECT_EQ(reason, "logout");
}

TEST(NotificationCenterTest, ObserversAreHeldWeaklyAndDeadOnesAreSkipped) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto kept = std::make_shared<Observer>(Observer{&log, "kept"});
  auto dropped = std::make_shared<Observer>(Observer{&log, "dropped"});
  std::weak_ptr<Observer> watch = dropped;
  center.addObserver(dropped, &Observer::onNotification, "N");
  center.addObserver(kept, &Observer::onNotification, "N");

  dropped.reset();
  EXPECT_TRUE(watch.expired()) << "registration must not keep the observer alive";
  center.post("N");
  EXPECT_EQ(log, (std::vector<std::string>{"kept:N"}));
  EXPECT_EQ(center.observerCount(), 1u);
}

TEST(NotificationCenterTest, RemovedObserversAreNotCalled) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto a = std::make_shared<Observer>(Observer{&log, "a"});
  auto b = std::make_shared<Observer>(Observer{&log, "b"});
  center.addObserver(a, &Observer::onNotification, "N");
  center.addObserver(a, &Observer::onNotification, "M");
  center.addObserver(b, &Observer::onNotification, "N");

  center.removeObserver(a, "N");
  center.post("N");
  center.post("M");
  center.removeObserver(b);
  center.post("N");
  EXPECT_EQ(log, (std::vector<std::string>{"b:N", "a:M"}));
}

TEST(NotificationCenterTest, AHandlerMayRemoveALaterObserverOfTheSamePost) {
  NotificationCenter center;
  std::vector<std::string> log;
  auto later = std::make_shared<Observer>(Observer{&log, "later"});
  auto remover = std::make_shared<int>(0);
  center.addObserver(remover, "N", [&](const Notification&) {
    log.push_back("remover");
    center.removeObserver(later);
  });
  center.addObserver(later, &Observer::onNotification, "N");
  center.post("N");
  EXPECT_EQ(log, (std::vector<std::string>{"remover"}));
}

}  // namespace
}  // namespace obolo
