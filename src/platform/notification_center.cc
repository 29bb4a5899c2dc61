#include "platform/notification_center.h"

#include <algorithm>

namespace obolo {
namespace {

bool SameOwner(const std::weak_ptr<void>& a, const std::shared_ptr<void>& b) {
  return !a.owner_before(b) && !b.owner_before(a);
}

}  // namespace

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter* const center = new NotificationCenter();
  return *center;
}

void NotificationCenter::addObserver(std::weak_ptr<void> owner, std::string name, Handler handler) {
  if (!handler) return;
  std::lock_guard<std::mutex> lock(mutex_);
  registrations_.push_back(
      {next_id_++, std::move(owner), std::move(name), std::make_shared<const Handler>(std::move(handler))});
}

void NotificationCenter::removeObserver(const std::shared_ptr<void>& owner) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(registrations_, [&](const Registration& r) { return SameOwner(r.owner, owner); });
}

void NotificationCenter::removeObserver(const std::shared_ptr<void>& owner, const std::string& name) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(registrations_,
                [&](const Registration& r) { return r.name == name && SameOwner(r.owner, owner); });
}

void NotificationCenter::post(std::string name, std::any object, std::map<std::string, std::any> userInfo) {
  const Notification notification{std::move(name), std::move(object), std::move(userInfo)};

  std::vector<Registration> matching;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    std::erase_if(registrations_, [](const Registration& r) { return r.owner.expired(); });
    for (const auto& registration : registrations_) {
      if (registration.name == notification.name) matching.push_back(registration);
    }
  }

  for (const auto& registration : matching) {
    // Keeps the owner alive while its handler runs, and skips it when it died
    // or was removed by an earlier handler of this same post.
    std::shared_ptr<void> owner = registration.owner.lock();
    if (!owner) continue;
    bool still_registered = false;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      still_registered = std::any_of(registrations_.begin(), registrations_.end(),
                                     [&](const Registration& r) { return r.id == registration.id; });
    }
    if (still_registered) (*registration.handler)(notification);
  }
}

std::size_t NotificationCenter::observerCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<std::size_t>(std::count_if(registrations_.begin(), registrations_.end(),
                                                [](const Registration& r) { return !r.owner.expired(); }));
}

}  // namespace obolo
