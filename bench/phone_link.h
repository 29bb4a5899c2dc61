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

// What a round-trip row reports, per iteration: the floor in round trips, the
// round trip in ms, the time beyond the floor in ms, and the round trips and
// connections the service's relay counted.
class RoundTripCounters {
 public:
  RoundTripCounters(double floor_round_trips, std::chrono::microseconds round_trip)
      : floor_(floor_round_trips), round_trip_ms_(static_cast<double>(round_trip.count()) / 1000.0) {}

  // Adds one iteration that took `seconds`; `relay` is the service relay's
  // counts for it.
  void add(double seconds, const DelayRelay::Counts& relay) {
    beyond_ms_ += seconds * 1000.0 - floor_ * round_trip_ms_;
    round_trips_ += static_cast<double>(relay.roundTrips);
    connections_ += static_cast<double>(relay.connections);
    ++iterations_;
  }

  void report(benchmark::State& state) const {
    if (iterations_ == 0) return;
    state.counters["floor_rtt"] = floor_;
    state.counters["rtt_ms"] = round_trip_ms_;
    state.counters["beyond_floor_ms"] = beyond_ms_ / iterations_;
    state.counters["round_trips"] = round_trips_ / iterations_;
    state.counters["connections"] = connections_ / iterations_;
  }

 private:
  double floor_;
  double round_trip_ms_;
  double beyond_ms_ = 0;
  double round_trips_ = 0;
  double connections_ = 0;
  double iterations_ = 0;
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_PHONE_LINK_H_
