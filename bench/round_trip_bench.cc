// Figures 11 and 12 (obolo-bench-phone): time to card as a phone on a mobile
// link sees it, in round trips, and the publisher's logo beside it.
//
// The kit talks to the sandbox through a relay that delays every chunk by the
// same time each way (25 ms, a 50 ms round trip; and 150 ms, a poor link);
// the logo comes through a relay of its own. Each row's floor is the least
// number of round trips the protocol allows:
//
//   warm      the kit's connection to the service is open (it keeps one open
//             for up to 4 s between calls): the bid alone, 1 round trip;
//   resumed   the connection is gone (the reader came back later) but the
//             TLS session is kept: TCP, TLS 1.3 and the bid, 3 round trips;
//   cold      a process that never connected (no TLS session either): also
//             3 round trips, with a full handshake's work on both ends;
//   logo      the logo next to the warm card: it must travel alongside the
//             bid, so its floor is 1 round trip as well, and
//             "logo_after_card_ms" says how long after the card it lands.
//
// "beyond_floor_ms" is the time beyond the floor; "round_trips" and
// "connections" what the service's relay counted per card.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <optional>
#include <thread>

#include "bench/bench_environment.h"
#include "bench/host_screen.h"
#include "bench/phone_link.h"
#include "entry/obolo.h"
#include "entry/position.h"
#include "platform/curl_http_session.h"
#include "platform/main_loop.h"

namespace obolo::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kTimeout{20};

struct CardRun {
  bool shown = false;
  double card_seconds = 0;
  double logo_seconds = 0;
};

// One reader opens the article; waits for the card, then for the logo (which
// is not part of the card's time).
CardRun OpenArticle() {
  MainLoop& loop = MainLoop::main();
  CardRun run;
  auto screen = std::make_unique<HostScreen>();
  const auto start = Clock::now();
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
  run.card_seconds = std::chrono::duration<double>(Clock::now() - start).count();
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
    counters.add(report_logo ? run.logo_seconds : run.card_seconds, relay.counts());
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
OBOLO_PHONE_BENCHMARK(BM_Phone_Logo);

}  // namespace
}  // namespace obolo::bench
