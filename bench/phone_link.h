// Shared by the figures of obolo-bench-phone: the relays' delay for a
// benchmark, and the counters every row reports against its floor.

#ifndef OBOLO_BENCH_PHONE_LINK_H_
#define OBOLO_BENCH_PHONE_LINK_H_

#include <benchmark/benchmark.h>

#include <chrono>

#include "bench/bench_environment.h"

namespace obolo::bench {

// The one-way delays measured: a good mobile link (50 ms round trip) and a
// poor one (300 ms).
inline constexpr int kGoodLinkMs = 25;
inline constexpr int kPoorLinkMs = 150;

// Sets both relays to the benchmark's one-way delay (its first argument, in
// milliseconds) and returns the round trip.
inline std::chrono::microseconds UseLink(benchmark::State& state) {
  const std::chrono::milliseconds one_way(state.range(0));
  BenchEnvironment::serviceRelay().setOneWayDelay(one_way);
  BenchEnvironment::logoRelay().setOneWayDelay(one_way);
  return 2 * std::chrono::duration_cast<std::chrono::microseconds>(one_way);
}

// One iteration of a round-trip row as the service's relay saw it: its time,
// the round trips and connections counted, how much of the time the client
// (the kit) and the server (the sandbox) took, and, where the iteration's
// start and end are known, the kit's time before its first byte (or
// connection) and after the answer reached it (negative when not known).
struct LinkRecord {
  double seconds = 0;
  double roundTrips = 0;
  double connections = 0;
  double clientMs = 0;
  double serverMs = 0;
  double beforeMs = -1;
  double afterMs = -1;

  static LinkRecord Of(double seconds, const DelayRelay::Counts& relay,
                       std::chrono::steady_clock::time_point start = {},
                       std::chrono::steady_clock::time_point end = {}) {
    using Ms = std::chrono::duration<double, std::milli>;
    LinkRecord record{seconds,
                      static_cast<double>(relay.roundTrips),
                      static_cast<double>(relay.connections),
                      static_cast<double>(relay.clientUs) / 1000.0,
                      static_cast<double>(relay.serverUs) / 1000.0};
    if (start != std::chrono::steady_clock::time_point{} && relay.firstFromClient >= start &&
        end >= relay.lastToClient) {
      record.beforeMs = Ms(relay.firstFromClient - start).count();
      record.afterMs = Ms(end - relay.lastToClient).count();
    }
    return record;
  }
};

// What a round-trip row reports, per iteration: the floor in round trips, the
// round trip in ms, the time beyond the floor in ms, and the rest of its
// LinkRecord.
class RoundTripCounters {
 public:
  RoundTripCounters(double floor_round_trips, std::chrono::microseconds round_trip)
      : floor_(floor_round_trips), round_trip_ms_(static_cast<double>(round_trip.count()) / 1000.0) {}

  void add(const LinkRecord& record) {
    if (record.beforeMs >= 0) {
      before_ms_ += record.beforeMs;
      after_ms_ += record.afterMs;
      ++timed_;
    }
    beyond_ms_ += record.seconds * 1000.0 - floor_ * round_trip_ms_;
    round_trips_ += record.roundTrips;
    connections_ += record.connections;
    client_ms_ += record.clientMs;
    server_ms_ += record.serverMs;
    ++iterations_;
  }

  void report(benchmark::State& state) const {
    if (iterations_ == 0) return;
    state.counters["floor_rtt"] = floor_;
    state.counters["rtt_ms"] = round_trip_ms_;
    state.counters["beyond_floor_ms"] = beyond_ms_ / iterations_;
    state.counters["round_trips"] = round_trips_ / iterations_;
    state.counters["connections"] = connections_ / iterations_;
    state.counters["client_ms"] = client_ms_ / iterations_;
    state.counters["server_ms"] = server_ms_ / iterations_;
    if (timed_ > 0) {
      state.counters["kit_before_ms"] = before_ms_ / timed_;
      state.counters["kit_after_ms"] = after_ms_ / timed_;
    }
  }

 private:
  double floor_;
  double round_trip_ms_;
  double beyond_ms_ = 0;
  double round_trips_ = 0;
  double connections_ = 0;
  double client_ms_ = 0;
  double server_ms_ = 0;
  double before_ms_ = 0;
  double after_ms_ = 0;
  double timed_ = 0;
  double iterations_ = 0;
};

// One reader opens the article on a new host screen (round_trip_bench.cc):
// from the Obolo's construction to the card shown, then to the logo shown.
struct CardRun {
  bool shown = false;
  double card_seconds = 0;
  double logo_seconds = -1;  // negative when the logo did not arrive
  std::chrono::steady_clock::time_point start;
  std::chrono::steady_clock::time_point card;
};
CardRun OpenArticle();

// The first card of a new process (a reader's cold start: fonts not loaded,
// no connection, no TLS session), through relays delaying `one_way_ms` each
// way: the child-process side of figure 11d. Prints the LinkRecord's fields
// on one line and returns the exit status.
int MeasureFirstCardOfProcess(int one_way_ms);

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_PHONE_LINK_H_
