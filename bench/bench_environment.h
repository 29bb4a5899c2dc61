// What every benchmark of obolo-bench runs against: one HTTPS sandbox on a
// loopback port that keeps connections alive for up to 10,000 requests (5 s
// idle) and answers with TCP_NODELAY, the kit pointed at it, a session store
// in a temporary directory, and the kit's diagnostic lines silenced.
//
// The kit reads its OBOLO_* variables once, at first use, so the environment
// is set up in main() before any benchmark (and any kit code) runs, and torn
// down after the last one.

#ifndef OBOLO_BENCH_BENCH_ENVIRONMENT_H_
#define OBOLO_BENCH_BENCH_ENVIRONMENT_H_

#include <memory>
#include <string>

#include "platform/sqlite_preference_store.h"
#include "sandbox/sandbox.h"

namespace obolo::bench {

class BenchEnvironment {
 public:
  // Starts the sandbox, sets the kit's variables and installs the store.
  // False, with `error` telling why, when the sandbox cannot start.
  static bool SetUp(std::string& error);
  // Uninstalls the store, stops the sandbox and removes the directory.
  static void TearDown();

  // REQUIRES: SetUp() succeeded.
  static sandbox::Sandbox& sandbox();
  // The path of the installed SQLite store.
  static const std::string& storePath();
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_BENCH_ENVIRONMENT_H_
