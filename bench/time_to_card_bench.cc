// Figure 2: time to card. A logged-out reader opens an article: the host
// constructs Obolo and loads the paywall over the article's view in a key
// window; the clock stops when the reader sees the card (the paywall's root
// view and the card shown, the splash hidden, the title filled in). Meanwhile
// the paywall also downloads the publisher's logo, as it does in an app.
//
// BM_TimeToCard_KitWithoutLogo is the same for a publisher without a logo.
// "process_cpu_us" is the CPU time of every thread during the measured time;
// "loaded_us" the time until loadPaywall returned, "answered_us" until the
// bid's answer reached the HTTP session's thread, and "decided_us" until the
// bid's answer showed the paywall (the card's texts follow on the next turn).
//
// The reference is the floor: one bare libcurl round trip of the same bid
// request (BM_ServiceCall_BareCurl), since the card needs exactly one bid.
//
// The main loop runs in real time on this (the main) thread. Making the host
// screen and tearing it down afterwards are outside the measured time; so is
// waiting for the logo to land, which keeps one iteration's download from
// overlapping the next iteration.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "bench/bench_environment.h"
#include "bench/host_screen.h"
#include "bench/process_cpu.h"
#include "entry/obolo.h"
#include "entry/position.h"
#include "paywall/paywall_vc.h"
#include "platform/http_session.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"

namespace obolo::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kCardTimeout{10};

// The kit's HTTP session with a note of when the bid's answer reached the
// session thread (its completion starting), so the card's time splits into
// before the answer and after it.
class AnswerClock final : public HttpSession {
 public:
  explicit AnswerClock(std::shared_ptr<HttpSession> inner) : inner_(std::move(inner)) {}
  void dataTask(HttpRequest request, CompletionHandler handler) override {
    const bool bid = request.url.find("bid") != std::string::npos;
    inner_->dataTask(std::move(request), [this, bid, handler = std::move(handler)](HttpOutcome outcome) {
      if (bid) answered_ = Clock::now().time_since_epoch().count();
      handler(std::move(outcome));
    });
  }
  // When the last bid's answer arrived; none since reset().
  std::optional<Clock::time_point> answered() const {
    const auto ticks = answered_.load();
    if (ticks == 0) return std::nullopt;
    return Clock::time_point(Clock::duration(ticks));
  }
  void reset() { answered_ = 0; }

 private:
  std::shared_ptr<HttpSession> inner_;
  std::atomic<Clock::rep> answered_{0};
};

// One reader per iteration; `logo` empty for a publisher without a logo.
void MeasureTimeToCard(benchmark::State& state, const std::string& logo) {
  BenchEnvironment::sandbox().clearRequests();
  MainLoop& loop = MainLoop::main();
  auto clock = std::make_shared<AnswerClock>(HttpSession::shared());
  const auto kit_session = HttpSession::setShared(clock);
  double cpu_seconds = 0;
  double loaded_seconds = 0;    // until loadPaywall returned
  double answered_seconds = 0;  // until the bid's answer reached the session thread
  double decided_seconds = 0;   // until the bid's answer showed the paywall
  for (auto _ : state) {
    clock->reset();
    auto screen = std::make_unique<HostScreen>();

    const double cpu_start = ProcessCpuSeconds();
    const auto start = Clock::now();
    Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, logo, sandbox::seed::kNormalArticleUrl,
                sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
    obolo.loadPaywall(screen->host, screen->content, Position::bottom);
    const auto loaded = Clock::now();
    auto paywall = std::dynamic_pointer_cast<PaywallVC>(screen->host->children().back());
    std::optional<Clock::time_point> decided;
    const bool shown = paywall && loop.runUntil(
                                      [&] {
                                        if (!decided && !paywall->view()->isHidden()) decided = Clock::now();
                                        return CardVisible(*paywall);
                                      },
                                      kCardTimeout);
    const auto stop = Clock::now();
    cpu_seconds += ProcessCpuSeconds() - cpu_start;
    if (!shown) {
      state.SkipWithError("the card did not show");
      return;
    }
    state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
    loaded_seconds += std::chrono::duration<double>(loaded - start).count();
    decided_seconds += std::chrono::duration<double>(decided.value_or(stop) - start).count();
    answered_seconds += std::chrono::duration<double>(clock->answered().value_or(stop) - start).count();

    // The logo's download finishes before the next reader arrives.
    if (!logo.empty() &&
        !loop.runUntil([&] { return paywall->imgPublisherLogo->image() != nullptr; }, kCardTimeout)) {
      state.SkipWithError("the logo did not arrive");
      return;
    }
    paywall.reset();
    screen.reset();
    loop.runFor(std::chrono::milliseconds(0));
  }
  if (state.iterations() > 0) {
    const double per_card = 1e6 / static_cast<double>(state.iterations());
    state.counters["process_cpu_us"] = cpu_seconds * per_card;
    state.counters["loaded_us"] = loaded_seconds * per_card;
    state.counters["decided_us"] = decided_seconds * per_card;
    state.counters["answered_us"] = answered_seconds * per_card;
  }
  HttpSession::setShared(kit_session);
}

void BM_TimeToCard_Kit(benchmark::State& state) {
  MeasureTimeToCard(state, BenchEnvironment::sandbox().logoUrl());
}
BENCHMARK(BM_TimeToCard_Kit)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The same without the logo's download, to show what the parallel download
// adds.
void BM_TimeToCard_KitWithoutLogo(benchmark::State& state) { MeasureTimeToCard(state, ""); }
BENCHMARK(BM_TimeToCard_KitWithoutLogo)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace obolo::bench
