// Figures 11 and 12 (obolo-bench-phone): time to card as a phone on a mobile
// link sees it, in round trips, and the publisher's logo beside it.
//
// The kit talks to the sandbox through a relay that delays every chunk by the
// same time each way (25 ms, a 50 ms round trip; and 150 ms, a poor link);
// the logo comes through a relay of its own. Each row's floor is the least
// number of round trips the protocol allows:
//
//   warm      the kit's connection to the service is open (it reuses an idle
//             one for up to a minute while the server keeps it): the bid
//             alone, 1 round trip;
//   resumed   the connection is gone (the reader came back later) but the
//             TLS session is kept: TCP, TLS 1.3 and the bid, 3 round trips;
//   cold      a session that never connected (no TLS session either): also
//             3 round trips, with a full handshake's work on both ends;
//   first     the first card of a new process, a reader's cold start: no
//             connection, no TLS session, and the fonts not loaded yet;
//             3 round trips, measured in child processes;
//   logo      the logo next to the warm card: it must travel alongside the
//             bid, so its floor is 1 round trip as well, and
//             "logo_after_card_ms" says how long after the card it lands.
//
// "beyond_floor_ms" is the time beyond the floor; "round_trips" and
// "connections" what the service's relay counted per card.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench_environment.h"
#include "bench/child_process.h"
#include "bench/host_screen.h"
#include "bench/phone_link.h"
#include "entry/obolo.h"
#include "entry/position.h"
#include "platform/curl_http_session.h"
#include "platform/main_loop.h"

namespace obolo::bench {
using Clock = std::chrono::steady_clock;

namespace {
constexpr std::chrono::seconds kTimeout{20};
}  // namespace

CardRun OpenArticle() {
  MainLoop& loop = MainLoop::main();
  CardRun run;
  auto screen = std::make_unique<HostScreen>();
  const auto start = Clock::now();
  run.start = start;
  Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, BenchEnvironment::logoUrl(),
              sandbox::seed::kNormalArticleUrl, sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
  obolo.loadPaywall(screen->host, screen->content, Position::bottom);
  auto paywall = std::dynamic_pointer_cast<PaywallVC>(screen->host->children().back());
  std::optional<Clock::time_point> logo;
  auto note_logo = [&] {
    if (!logo && paywall->imgPublisherLogo->image() != nullptr) logo = Clock::now();
  };
  run.shown = loop.runUntil(
      [&] {
        note_logo();
        return CardVisible(*paywall);
      },
      kTimeout);
  run.card = Clock::now();
  run.card_seconds = std::chrono::duration<double>(run.card - start).count();
  if (!run.shown) return run;
  loop.runUntil(
      [&] {
        note_logo();
        return logo.has_value();
      },
      kTimeout);
  run.logo_seconds = logo ? std::chrono::duration<double>(*logo - start).count() : -1;
  paywall.reset();
  screen.reset();
  loop.runFor(std::chrono::milliseconds(0));
  return run;
}

int MeasureFirstCardOfProcess(int one_way_ms) {
  const std::chrono::milliseconds one_way(one_way_ms);
  BenchEnvironment::serviceRelay().setOneWayDelay(one_way);
  BenchEnvironment::logoRelay().setOneWayDelay(one_way);
  BenchEnvironment::serviceRelay().resetCounts();
  const CardRun run = OpenArticle();
  if (!run.shown) return 1;
  const LinkRecord record =
      LinkRecord::Of(run.card_seconds, BenchEnvironment::serviceRelay().counts(), run.start, run.card);
  std::printf("%.9f %.0f %.0f %.6f %.6f %.6f %.6f\n", record.seconds, record.roundTrips, record.connections,
              record.clientMs, record.serverMs, record.beforeMs, record.afterMs);
  return 0;
}

namespace {

// Runs this program again to measure the first card of a new process;
// nothing when the child failed.
std::optional<LinkRecord> FirstCardInNewProcess(int one_way_ms) {
  char self[4096];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  if (length <= 0) return std::nullopt;
  const auto printed =
      RunToEnd({std::string(self, static_cast<size_t>(length)), "--first-card=" + std::to_string(one_way_ms)});
  LinkRecord record;
  if (!printed || std::sscanf(printed->c_str(), "%lf %lf %lf %lf %lf %lf %lf", &record.seconds,
                              &record.roundTrips, &record.connections, &record.clientMs, &record.serverMs,
                              &record.beforeMs, &record.afterMs) != 7) {
    return std::nullopt;
  }
  return record;
}

void BM_Phone_CardFirstInProcess(benchmark::State& state) {
  const auto round_trip = UseLink(state);
  RoundTripCounters counters(3, round_trip);
  for (auto _ : state) {
    const auto record = FirstCardInNewProcess(static_cast<int>(state.range(0)));
    if (!record) {
      state.SkipWithError("the new process did not show the card");
      break;
    }
    state.SetIterationTime(record->seconds);
    counters.add(*record);
  }
  counters.report(state);
}

enum class Connection { kWarm, kResumed, kCold };

void MeasureCard(benchmark::State& state, Connection connection, bool report_logo) {
  const auto round_trip = UseLink(state);
  DelayRelay& relay = BenchEnvironment::serviceRelay();
  RoundTripCounters counters(connection == Connection::kWarm ? 1 : 3, round_trip);
  double logo_after_card_ms = 0;
  if (connection != Connection::kCold && !OpenArticle().shown) {  // opens the connections and a TLS session
    state.SkipWithError("the card did not show");
    return;
  }
  for (auto _ : state) {
    if (connection == Connection::kResumed) {
      relay.dropConnections();
      BenchEnvironment::logoRelay().dropConnections();
    } else if (connection == Connection::kCold) {
      HttpSession::setShared(std::make_shared<CurlHttpSession>());
    }
    // Lets the dropped connections' ends reach the kit.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    relay.resetCounts();

    const CardRun run = OpenArticle();
    if (!run.shown || run.logo_seconds < 0) {
      state.SkipWithError(run.shown ? "the logo did not arrive" : "the card did not show");
      break;
    }
    state.SetIterationTime(report_logo ? run.logo_seconds : run.card_seconds);
    if (report_logo) {
      counters.add(LinkRecord::Of(run.logo_seconds, relay.counts()));
    } else {
      counters.add(LinkRecord::Of(run.card_seconds, relay.counts(), run.start, run.card));
    }
    logo_after_card_ms += (run.logo_seconds - run.card_seconds) * 1000.0;
  }
  if (connection == Connection::kCold) HttpSession::setShared(nullptr);
  counters.report(state);
  if (state.iterations() > 0) {
    state.counters["logo_after_card_ms"] = logo_after_card_ms / static_cast<double>(state.iterations());
  }
}

void BM_Phone_CardWarm(benchmark::State& state) { MeasureCard(state, Connection::kWarm, false); }
void BM_Phone_CardResumed(benchmark::State& state) { MeasureCard(state, Connection::kResumed, false); }
void BM_Phone_CardCold(benchmark::State& state) { MeasureCard(state, Connection::kCold, false); }
void BM_Phone_Logo(benchmark::State& state) { MeasureCard(state, Connection::kWarm, true); }

// Fewer iterations on the poor link keep the run within minutes.
#define OBOLO_PHONE_BENCHMARK(name)                                                                   \
  BENCHMARK(name)->Arg(kGoodLinkMs)->Iterations(6)->UseManualTime()->Unit(benchmark::kMillisecond); \
  BENCHMARK(name)->Arg(kPoorLinkMs)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond)

OBOLO_PHONE_BENCHMARK(BM_Phone_CardWarm);
OBOLO_PHONE_BENCHMARK(BM_Phone_CardResumed);
OBOLO_PHONE_BENCHMARK(BM_Phone_CardCold);
OBOLO_PHONE_BENCHMARK(BM_Phone_CardFirstInProcess);
OBOLO_PHONE_BENCHMARK(BM_Phone_Logo);

}  // namespace
}  // namespace obolo::bench
