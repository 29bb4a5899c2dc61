// Captures the kit's log lines for a test's lifetime.

#ifndef OBOLO_TESTS_SUPPORT_LOG_CAPTURE_H_
#define OBOLO_TESTS_SUPPORT_LOG_CAPTURE_H_

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log.h"

namespace obolo::testing {

// Installs itself as the log sink on construction and restores standard output
// on destruction. Lines may arrive from any thread.
class LogCapture {
 public:
  struct Line {
    std::string text;
    LogContent content;
  };

  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> lines() const;
  std::vector<Line> entries() const;
  bool contains(std::string_view text) const;
  // Index of the first line equal to `text` at or after `from`, or -1.
  int indexOf(std::string_view text, int from = 0) const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_LOG_CAPTURE_H_
