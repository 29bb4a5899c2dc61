#include "sandbox/fault_plan.h"

#include <utility>

namespace obolo::sandbox {

void FaultPlan::set(std::string_view path, Fault fault) {
  std::lock_guard lock(mutex_);
  if (fault.times == 0 || fault.times < Fault::kUntilCleared) {
    faults_.erase(std::string(path));
    return;
  }
  faults_.insert_or_assign(std::string(path), std::move(fault));
}

void FaultPlan::clear(std::string_view path) {
  std::lock_guard lock(mutex_);
  if (auto it = faults_.find(path); it != faults_.end()) faults_.erase(it);
}

void FaultPlan::clearAll() {
  std::lock_guard lock(mutex_);
  faults_.clear();
}

std::optional<Fault> FaultPlan::take(std::string_view path) {
  std::lock_guard lock(mutex_);
  auto it = faults_.find(path);
  if (it == faults_.end()) return std::nullopt;
  Fault fault = it->second;
  if (it->second.times != Fault::kUntilCleared && --it->second.times == 0) faults_.erase(it);
  return fault;
}

}  // namespace obolo::sandbox
