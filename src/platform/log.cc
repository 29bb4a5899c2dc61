#include "platform/log.h"
#include "platform/no_destructor.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

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

// NullLogSink's function and WithoutCredentials' filter, as types of their
// own, so SetLogSink can tell which lines the sink will drop.
void DropLine(std::string_view, LogContent) {}
using LineFunction = void (*)(std::string_view, LogContent);

struct CredentialFilter {
  LogSink next;
  void operator()(std::string_view line, LogContent content) const {
    if (content != LogContent::kCredential && next) next(line, content);
  }
};

struct Drops {
  bool diagnostic = false;
  bool credential = false;
};

Drops DropsOf(const LogSink& sink, bool is_default) {
  if (!sink) return is_default ? Drops{} : Drops{true, true};
  if (const auto* function = sink.target<LineFunction>(); function != nullptr && *function == &DropLine) {
    return Drops{true, true};
  }
  if (const auto* filter = sink.target<CredentialFilter>()) {
    Drops drops = DropsOf(filter->next, /*is_default=*/false);
    drops.credential = true;
    return drops;
  }
  return Drops{};
}

// What the current sink drops; written under SinkMutex().
std::atomic<bool> drops_diagnostic{false};
std::atomic<bool> drops_credential{false};

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
  const Drops drops = DropsOf(sink, /*is_default=*/true);
  std::shared_ptr<const LogSink> next;
  if (sink) next = std::make_shared<const LogSink>(std::move(sink));
  std::lock_guard<std::mutex> lock(SinkMutex());
  CurrentSink() = std::move(next);
  drops_diagnostic.store(drops.diagnostic, std::memory_order_relaxed);
  drops_credential.store(drops.credential, std::memory_order_relaxed);
}

LogSink StandardOutputLogSink() {
  return [](std::string_view line, LogContent) { WriteToStandardOutput(line); };
}

LogSink NullLogSink() { return LineFunction{&DropLine}; }

LogSink WithoutCredentials(LogSink next) { return CredentialFilter{std::move(next)}; }

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

bool LogLineWanted(LogContent content) {
  const auto& drops = content == LogContent::kCredential ? drops_credential : drops_diagnostic;
  return !drops.load(std::memory_order_relaxed);
}

}  // namespace obolo
