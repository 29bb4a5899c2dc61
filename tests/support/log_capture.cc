#include "support/log_capture.h"

namespace obolo::testing {

LogCapture::LogCapture() {
  SetLogSink([this](std::string_view line, LogContent content) {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back({std::string(line), content});
  });
}

LogCapture::~LogCapture() { SetLogSink(nullptr); }

std::vector<std::string> LogCapture::lines() const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> texts;
  for (const auto& line : lines_) texts.push_back(line.text);
  return texts;
}

std::vector<LogCapture::Line> LogCapture::entries() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

bool LogCapture::contains(std::string_view text) const { return indexOf(text) >= 0; }

int LogCapture::indexOf(std::string_view text, int from) const {
  std::lock_guard<std::mutex> lock(mutex_);
  for (int i = from; i < static_cast<int>(lines_.size()); ++i) {
    if (lines_[static_cast<size_t>(i)].text == text) return i;
  }
  return -1;
}

void LogCapture::clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.clear();
}

}  // namespace obolo::testing
