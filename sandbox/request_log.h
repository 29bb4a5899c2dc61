// The requests a sandbox has received, in arrival order. Thread-safe: server
// threads append while a test reads.

#ifndef OBOLO_SANDBOX_REQUEST_LOG_H_
#define OBOLO_SANDBOX_REQUEST_LOG_H_

#include <mutex>
#include <string_view>
#include <vector>

#include "sandbox/recorded_request.h"

namespace obolo::sandbox {

class RequestLog {
 public:
  void append(RecordedRequest request);
  std::vector<RecordedRequest> all() const;
  // The requests whose path equals `path` (the query is not compared).
  std::vector<RecordedRequest> to(std::string_view path) const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<RecordedRequest> requests_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_REQUEST_LOG_H_
