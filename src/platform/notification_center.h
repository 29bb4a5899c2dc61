// The process's notification centre: named broadcasts to whoever observes them.
//
// Observers are registered by name with a handler and an owner. The centre
// holds the owner weakly, as the platform does: registering never keeps an
// object alive, and the registration of an owner that has died is skipped and
// dropped. A handler must not itself capture its owner strongly.
//
// post() delivers synchronously, on the posting thread, to the observers of
// that name in the order they registered. The kit posts on the main loop, so
// its observers run there. Registration, removal and posting are thread-safe;
// handlers run outside the centre's lock, so a handler may register, remove or
// post in turn. Observers registered during a post are not called for it.

#ifndef OBOLO_PLATFORM_NOTIFICATION_CENTER_H_
#define OBOLO_PLATFORM_NOTIFICATION_CENTER_H_

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace obolo {

// One posted notification, as observers receive it.
struct Notification {
  std::string name;  // what was posted, e.g. "NotificationIdentifier"
  // The sender, when the poster gave one; empty otherwise.
  std::any object;
  std::map<std::string, std::any> userInfo;  // what the poster attached
};

class NotificationCenter {
 public:
  // What an observer runs for a notification, on the poster's thread.
  using Handler = std::function<void(const Notification&)>;

  // The process's centre, where the kit posts and observes.
  static NotificationCenter& defaultCenter();

  // Calls `handler` for every later notification named `name` while `owner` is
  // alive. An owner may register several times; each registration is called.
  void addObserver(std::weak_ptr<void> owner, std::string name, Handler handler);

  // Calls `observer->method(notification)`, holding `observer` weakly.
  template <class T>
  void addObserver(const std::shared_ptr<T>& observer, void (T::*method)(const Notification&),
                   std::string name) {
    std::weak_ptr<T> weak = observer;
    addObserver(std::weak_ptr<void>(observer), std::move(name), [weak, method](const Notification& note) {
      if (auto strong = weak.lock()) ((*strong).*method)(note);
    });
  }

  // Drops every registration of `owner`, or only those for `name`.
  void removeObserver(const std::shared_ptr<void>& owner);
  void removeObserver(const std::shared_ptr<void>& owner, const std::string& name);

  // Calls, at once and on this thread, every live registration for `name`, in
  // registration order.
  void post(std::string name, std::any object = {}, std::map<std::string, std::any> userInfo = {});

  // Registrations whose owner is still alive (for tests and diagnostics).
  std::size_t observerCount() const;

 private:
  struct Registration {
    std::uint64_t id;
    std::weak_ptr<void> owner;
    std::string name;
    std::shared_ptr<const Handler> handler;
  };

  mutable std::mutex mutex_;
  std::vector<Registration> registrations_;  // guarded by mutex_, in registration order
  std::uint64_t next_id_ = 0;                // guarded by mutex_
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_NOTIFICATION_CENTER_H_
