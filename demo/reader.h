// The reader the demo plays: a host screen with an article, the paywall over
// it, and the taps a reader makes, with a timeline of what the reader sees.

#ifndef OBOLO_DEMO_READER_H_
#define OBOLO_DEMO_READER_H_

#include <string>

#include "demo/demo_options.h"

namespace obolo::sandbox {
class Sandbox;
}

namespace obolo::demo {

// The service the demo runs against.
struct Service {
  std::string origin;   // API, wallet site and redirect origin
  std::string caFile;   // certificate to trust; empty for the system's
  std::string logoUrl;  // the publisher's logo
  // The embedded sandbox, or null for another service: scenarios that need a
  // session made to order (an expired token) need it.
  sandbox::Sandbox* sandbox = nullptr;
};

// Plays the scenario on the main loop (real time) and prints the timeline.
// Returns the exit status: 0 when the reader saw what the scenario promises,
// 1 when a step did not happen in time, 2 when the scenario cannot run
// against this service.
int PlayReader(const DemoOptions& options, const Service& service);

}  // namespace obolo::demo

#endif  // OBOLO_DEMO_READER_H_
