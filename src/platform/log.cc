#include "platform/log.h"
#include "platform/no_destructor.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace obolo {
namespace {

std::mutex& SinkMutex() {
  static NoDestructor<std::mutex> mutex;
  return *mutex;
}

// Shared, so a line being written keeps its sink alive while another thread
// replaces it.
std::shared_ptr<const LogSink>& CurrentSink() {
  static NoDestructor<std::shared_ptr<const LogSink>> sink;
  return *sink;
}

void WriteToStandardOutput(std::string_view line) {
  // One fwrite per line keeps lines from different threads whole.
  std::string text;
  text.reserve(line.size() + 1);
  text.append(line);
  text.push_back('\n');
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

void SetLogSink(LogSink sink) {
  std::shared_ptr<const LogSink> next;
  if (sink) next = std::make_shared<const LogSink>(std::move(sink));
  std::lock_guard<std::mutex> lock(SinkMutex());
  CurrentSink() = std::move(next);
}

LogSink StandardOutputLogSink() {
  return [](std::string_view line, LogContent) { WriteToStandardOutput(line); };
}

LogSink NullLogSink() {
  return [](std::string_view, LogContent) {};
}

LogSink WithoutCredentials(LogSink next) {
  return [next = std::move(next)](std::string_view line, LogContent content) {
    if (content != LogContent::kCredential && next) next(line, content);
  };
}

void LogLine(std::string_view line, LogContent content) {
  std::shared_ptr<const LogSink> sink;
  {
    std::lock_guard<std::mutex> lock(SinkMutex());
    sink = CurrentSink();
  }
  if (sink) {
    (*sink)(line, content);
  } else {
    WriteToStandardOutput(line);
  }
}

}  // namespace obolo
