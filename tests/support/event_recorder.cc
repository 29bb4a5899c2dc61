#include "support/event_recorder.h"

#include "platform/main_loop.h"

namespace obolo::testing {

void EventRecorder::onPaywallEvent(const PaywallEvent& event) {
  if (!MainLoop::main().isMainThread()) ++offMainThread_;
  events_.push_back(event);
  if (also_) also_(event);
}

std::vector<std::string> EventRecorder::described() const {
  std::vector<std::string> lines;
  for (const auto& event : events_) lines.push_back(Describe(event));
  return lines;
}

std::vector<std::string> EventRecorder::articles() const {
  std::vector<std::string> urls;
  for (const auto& event : events_) urls.push_back(event.articleUrl);
  return urls;
}

}  // namespace obolo::testing
