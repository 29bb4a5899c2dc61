// Target–action pairs, shared by controls and gesture recognisers.
//
// A target is held weakly, as on the platform: registering an action never
// keeps the target alive, and the action of a target that has died is skipped.
// An action is a member function of the target taking nothing, the sender (as
// a shared_ptr to the sender's class or any class derived from it; null when
// the sender is of another class), or the sender as std::any.

#ifndef OBOLO_TOOLKIT_TARGET_ACTION_H_
#define OBOLO_TOOLKIT_TARGET_ACTION_H_

#include <any>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace obolo {
namespace internal {

template <class Method>
struct ActionParameter {};
template <class Class, class Result, class Parameter>
struct ActionParameter<Result (Class::*)(Parameter)> {
  using type = std::remove_cvref_t<Parameter>;
};

template <class Target, class Method, class Sender>
void CallAction(Target& target, Method method, const std::shared_ptr<Sender>& sender) {
  if constexpr (std::is_invocable_v<Method, Target&>) {
    std::invoke(method, target);
  } else if constexpr (std::is_invocable_v<Method, Target&, std::any>) {
    std::invoke(method, target, std::any(sender));
  } else {
    using Pointee = typename ActionParameter<Method>::type::element_type;
    std::invoke(method, target, std::dynamic_pointer_cast<Pointee>(sender));
  }
}

}  // namespace internal

// The actions registered with one sender, each for a set of events (bit masks).
template <class Sender>
class TargetActionList {
 public:
  // An action as the list calls it, with the sender.
  using Action = std::function<void(const std::shared_ptr<Sender>&)>;

  // Adds `method` of `target` (held weakly: a target that is gone is skipped)
  // for `events`.
  template <class Target, class Method>
  void add(const std::shared_ptr<Target>& target, Method method, unsigned events) {
    std::weak_ptr<Target> weak = target;
    entries_.push_back({events, target.get(), [weak, method](const std::shared_ptr<Sender>& sender) {
                          if (auto strong = weak.lock()) internal::CallAction(*strong, method, sender);
                        }});
  }

  // An action without a target; the list holds it (and what it captures).
  void add(Action action, unsigned events) { entries_.push_back({events, nullptr, std::move(action)}); }

  // Drops the actions of `target` (all of them when `target` is null) for the
  // given events.
  void remove(const void* target, unsigned events) {
    std::erase_if(entries_, [&](Entry& entry) {
      if (target != nullptr && entry.target != target) return false;
      entry.events &= ~events;
      return entry.events == 0;
    });
  }

  // Calls, in registration order, every action registered for any of `events`.
  void send(const std::shared_ptr<Sender>& sender, unsigned events) const {
    std::vector<Action> due;  // actions may change the list while they run
    for (const auto& entry : entries_) {
      if ((entry.events & events) != 0) due.push_back(entry.action);
    }
    for (const auto& action : due) action(sender);
  }

  bool empty() const { return entries_.empty(); }  // no action registered

 private:
  struct Entry {
    unsigned events;
    const void* target;  // identity only, never dereferenced
    Action action;
  };
  std::vector<Entry> entries_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_TARGET_ACTION_H_
