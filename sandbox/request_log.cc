#include "sandbox/request_log.h"

#include <utility>

namespace obolo::sandbox {

void RequestLog::append(RecordedRequest request) {
  std::lock_guard lock(mutex_);
  requests_.push_back(std::move(request));
}

std::vector<RecordedRequest> RequestLog::all() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

std::vector<RecordedRequest> RequestLog::to(std::string_view path) const {
  std::lock_guard lock(mutex_);
  std::vector<RecordedRequest> matching;
  for (const auto& request : requests_) {
    if (request.path == path) matching.push_back(request);
  }
  return matching;
}

void RequestLog::clear() {
  std::lock_guard lock(mutex_);
  requests_.clear();
}

}  // namespace obolo::sandbox
