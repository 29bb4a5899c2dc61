// The options of obolo-demo:
//
//   obolo-demo [--scenario NAME] [--position top|center|bottom] [--base-url URL]
//              [--snapshots DIR] [--verbose] [--help]

#ifndef OBOLO_DEMO_DEMO_OPTIONS_H_
#define OBOLO_DEMO_DEMO_OPTIONS_H_

#include <string>
#include <vector>

#include "entry/position.h"

namespace obolo::demo {

enum class Scenario { kNewReader, kReturningReader, kExpiredToken, kInsufficientFunds, kServiceDown };

struct DemoOptions {
  Scenario scenario = Scenario::kNewReader;
  Position position = Position::center;
  // Empty: start the sandbox service inside the demo.
  std::string baseUrl;
  // Also show the kit's own diagnostic lines (on standard error).
  bool verbose = false;
  // Where to write a picture of each step; empty: no pictures.
  std::string snapshotDir;
  bool help = false;
  // Set when the arguments are not valid; says what is wrong.
  std::string error;
};

DemoOptions ParseDemoOptions(const std::vector<std::string>& arguments);
std::string DemoUsage(const std::string& program);
std::string ScenarioName(Scenario scenario);

}  // namespace obolo::demo

#endif  // OBOLO_DEMO_DEMO_OPTIONS_H_
