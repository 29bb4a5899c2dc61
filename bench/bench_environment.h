// What every benchmark of obolo-bench runs against: one HTTPS sandbox on a
// loopback port that keeps connections alive for up to 10,000 requests (5 s
// idle) and answers with TCP_NODELAY, the kit pointed at it, a session store
// in a temporary directory, and the kit's diagnostic lines silenced.
//
// obolo-bench-phone puts a slow link between the two: the kit talks to the
// sandbox through a DelayRelay (bench/delay_relay.h), and the publisher's
// logo comes through a second one, so each relay counts its own round trips.
//
// The kit reads its OBOLO_* variables once, at first use, so the environment
// is set up in main() before any benchmark (and any kit code) runs, and torn
// down after the last one.

#ifndef OBOLO_BENCH_BENCH_ENVIRONMENT_H_
#define OBOLO_BENCH_BENCH_ENVIRONMENT_H_

#include <memory>
#include <string>

#include "bench/delay_relay.h"
#include "platform/sqlite_preference_store.h"
#include "sandbox/sandbox.h"

namespace obolo::bench {

class BenchEnvironment {
 public:
  // Starts the sandbox (and the relays when `through_relays`), sets the kit's
  // variables and installs the store. False, with `error` telling why, when
  // something cannot start.
  static bool SetUp(std::string& error, bool through_relays = false);
  // Uninstalls the store, stops the sandbox and removes the directory.
  static void TearDown();

  // REQUIRES: SetUp() succeeded.
  static sandbox::Sandbox& sandbox();
  // The path of the installed SQLite store.
  static const std::string& storePath();

  // The address the kit's calls go to, and the publisher logo's address as a
  // host passes it: the sandbox's own, or the relays'.
  static std::string serviceUrl();
  static std::string logoUrl();
  // REQUIRES: set up through the relays.
  static DelayRelay& serviceRelay();
  static DelayRelay& logoRelay();
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_BENCH_ENVIRONMENT_H_
