// The faults set on a sandbox's routes, keyed by path. Thread-safe: a test sets
// faults while server threads take them.

#ifndef OBOLO_SANDBOX_FAULT_PLAN_H_
#define OBOLO_SANDBOX_FAULT_PLAN_H_

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/fault.h"

namespace obolo::sandbox {

class FaultPlan {
 public:
  // Replaces any fault set on `path`. A fault with `times` 0 clears it.
  void set(std::string_view path, Fault fault);
  void clear(std::string_view path);
  void clearAll();
  // The fault that applies to the next request on `path`, counting it as
  // used; none when the route should answer normally.
  std::optional<Fault> take(std::string_view path);

 private:
  std::mutex mutex_;
  std::map<std::string, Fault, std::less<>> faults_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_FAULT_PLAN_H_
