#include "toolkit/ns_object.h"

#include <algorithm>

namespace obolo {

NSObject::~NSObject() = default;

void NSObject::setAssociatedObject(const void* key, std::shared_ptr<NSObject> value) {
  auto it = std::find_if(associations_.begin(), associations_.end(),
                         [key](const auto& entry) { return entry.first == key; });
  std::shared_ptr<NSObject> previous;  // released after the table is consistent
  if (it != associations_.end()) {
    previous = std::move(it->second);
    if (value) {
      it->second = std::move(value);
    } else {
      associations_.erase(it);
    }
  } else if (value) {
    associations_.emplace_back(key, std::move(value));
  }
}

std::shared_ptr<NSObject> NSObject::associatedObjectAny(const void* key) const {
  for (const auto& [entry_key, value] : associations_) {
    if (entry_key == key) return value;
  }
  return nullptr;
}

}  // namespace obolo
