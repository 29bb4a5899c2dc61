// Figure 6: what the host's observers cost the paywall.
//
// With no observer registered, every emit point of the kit is one check,
// reporter.listening(): BM_Observer_EmitPointWithoutObserver runs that check
// as the paywall's decision does, against a bare call of an empty function
// that the compiler may not inline (BM_Observer_BareFunctionCall), and is set
// beside one whole card decision (BM_Observer_DecisionWithoutObserver): a
// loaded paywall decides on a full bid record (bench/data/full_bid_answer.json,
// which shows the card) and the main loop turns once to fill the card's texts.
// BM_Observer_DecisionWithNoOpObserver is the same decision with one observer
// registered that does nothing: the event is built, its price masked against
// the stored session, posted and delivered in that turn.

#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "bench/bench_environment.h"
#include "entry/obolo.h"
#include "entry/paywall_observer.h"
#include "entry/paywall_reporter.h"
#include "network/response_records.h"
#include "paywall/paywall_vc.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"

namespace obolo::bench {
namespace {

class NoOpObserver : public PaywallObserver {
 public:
  void onPaywallEvent(const PaywallEvent& event) override { benchmark::DoNotOptimize(&event); }
};

std::optional<DataSet> CardRecord() {
  std::ifstream file(OBOLO_BENCH_DATA_DIR "/full_bid_answer.json", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  auto decoded = DecodeRecord<OboloData>(text);
  if (!decoded || !decoded.value().data) return std::nullopt;
  return *decoded.value().data;
}

[[gnu::noinline]] void EmptyFunction(int* value) { benchmark::DoNotOptimize(value); }

void BM_Observer_BareFunctionCall(benchmark::State& state) {
  int value = 0;
  for (auto _ : state) {
    EmptyFunction(&value);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_Observer_BareFunctionCall);

void BM_Observer_EmitPointWithoutObserver(benchmark::State& state) {
  const PaywallReporter reporter(std::make_shared<PaywallObservers>(), sandbox::seed::kNormalArticleUrl);
  if (PaywallObservers::anyRegistered()) {
    state.SkipWithError("an observer is registered");
    return;
  }
  for (auto _ : state) {
    if (reporter.listening()) {
      reporter.report({.kind = PaywallEventKind::cardShown, .priceText = "€0.50", .position = Position::center});
    }
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_Observer_EmitPointWithoutObserver);

// Card decisions on one paywall, loaded over a host screen and settled first.
void MeasureDecision(benchmark::State& state, bool withObserver) {
  const auto record = CardRecord();
  if (!record) {
    state.SkipWithError("the bid record does not decode");
    return;
  }
  auto observer = std::make_shared<NoOpObserver>();
  Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, "", sandbox::seed::kNormalArticleUrl,
              sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
  if (withObserver) obolo.addObserver(observer);
  auto host = std::make_shared<UIViewController>();
  obolo.loadPaywall(host);
  auto paywall = std::dynamic_pointer_cast<PaywallVC>(host->children().back());
  MainLoop& loop = MainLoop::main();
  if (!paywall || !loop.runUntil([&] { return !paywall->unlockView->isHidden(); }, std::chrono::seconds(10))) {
    state.SkipWithError("the card did not show");
    return;
  }
  loop.runFor(std::chrono::milliseconds(1));
  for (auto _ : state) {
    paywall->decidePaywall(*record);
    loop.runFor(std::chrono::seconds(0));  // the card's texts, and the event
  }
  obolo.removeObserver(observer);
}

void BM_Observer_DecisionWithoutObserver(benchmark::State& state) { MeasureDecision(state, false); }
BENCHMARK(BM_Observer_DecisionWithoutObserver)->Unit(benchmark::kMicrosecond);

void BM_Observer_DecisionWithNoOpObserver(benchmark::State& state) { MeasureDecision(state, true); }
BENCHMARK(BM_Observer_DecisionWithNoOpObserver)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace obolo::bench
