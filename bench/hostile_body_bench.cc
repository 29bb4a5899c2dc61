// Figure 10: answers shaped to exhaust the client. Each body is under the
// transport's cap (1 MiB); it is decoded as the HTTP session's thread decodes
// every answer (in place, from the body the transfer filled), so the decode's
// time is how long the body holds that thread, and every other completion
// waits. "peak_added_kib" is the resident memory the decode adds at its peak
// (the process's high-water mark is reset just before it). The floor is a
// normal full bid answer in the same run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "network/response_records.h"

namespace obolo::bench {
namespace {

constexpr std::size_t kMiB = 1 << 20;

long StatusKib(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  const std::string prefix = std::string(field) + ":";
  while (std::getline(status, line)) {
    if (line.rfind(prefix, 0) == 0) return std::strtol(line.c_str() + prefix.size(), nullptr, 10);
  }
  return -1;
}

// Resets the high-water mark of resident memory to what is resident now.
bool ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
  return static_cast<bool>(clear.flush());
}

std::string Repeat(std::string_view piece, std::size_t bytes) {
  std::string text;
  while (text.size() + piece.size() <= bytes) text.append(piece);
  return text;
}

std::string FullBid() {
  std::ifstream file(OBOLO_BENCH_DATA_DIR "/full_bid_answer.json", std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Each body, at most `bytes` long.
std::string Body(int shape, std::size_t bytes) {
  switch (shape) {
    case 0:
      return FullBid();
    case 1:
      return std::string(bytes, '[');
    case 2: {
      std::string nested = Repeat(R"({"a":)", bytes * 5 / 6);
      return nested + "1" + std::string(nested.size() / 5, '}');
    }
    case 3: {
      std::string wide = R"({"success":true,"extra":[)" + Repeat("{},", bytes - 30);
      wide.back() = ']';
      return wide + "}";
    }
    case 4: {
      std::string records = R"({"data":{"recommendations":[)" + Repeat(R"({"visits":1},)", bytes - 40);
      records.back() = ']';
      return records + "}}";
    }
    case 5:
      return R"({"success":true,"message":")" + std::string(bytes - 40, 'x') + R"("})";
    case 6:
      return R"({"success":true,"message":")" + Repeat(R"(\u00e9)", bytes - 40) + R"("})";
    default: {
      std::string keys = "{";
      for (int i = 0; keys.size() < bytes - 40; ++i) keys += "\"k" + std::to_string(i) + "\":0,";
      return keys + R"("success":true})";
    }
  }
}

// The body as a transfer fills it: appended in 16 KiB pieces.
std::string AsTransferred(const std::string& body) {
  std::string filled;
  for (std::size_t at = 0; at < body.size(); at += 16 * 1024) filled.append(body, at, 16 * 1024);
  return filled;
}

template <class Envelope>
void MeasureBody(benchmark::State& state, int shape, std::size_t bytes) {
  const std::string body = Body(shape, bytes);
  long peak_added = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::string filled = AsTransferred(body);
    const bool reset = ResetPeak();
    const long resident = StatusKib("VmRSS");
    state.ResumeTiming();
    auto decoded = DecodeRecordInPlace<Envelope>(filled);
    benchmark::DoNotOptimize(decoded);
    state.PauseTiming();
    if (reset) peak_added = std::max(peak_added, StatusKib("VmHWM") - resident);
    state.ResumeTiming();
  }
  state.counters["body_kib"] = static_cast<double>(body.size()) / 1024.0;
  state.counters["peak_added_kib"] = static_cast<double>(peak_added);
}

void BM_Hostile_FullBid(benchmark::State& state) { MeasureBody<OboloData>(state, 0, 0); }
void BM_Hostile_Brackets1MB(benchmark::State& state) { MeasureBody<OboloData>(state, 1, 1'000'000); }
void BM_Hostile_BracketsAtCap(benchmark::State& state) { MeasureBody<OboloData>(state, 1, kMiB); }
void BM_Hostile_NestedObjects(benchmark::State& state) { MeasureBody<OboloData>(state, 2, kMiB); }
void BM_Hostile_WideUnknownArray(benchmark::State& state) { MeasureBody<OboloData>(state, 3, kMiB); }
void BM_Hostile_WideRecords(benchmark::State& state) { MeasureBody<BalanceAndArticleData>(state, 4, kMiB); }
void BM_Hostile_HugeString(benchmark::State& state) { MeasureBody<OboloData>(state, 5, kMiB); }
void BM_Hostile_EscapedString(benchmark::State& state) { MeasureBody<OboloData>(state, 6, kMiB); }
void BM_Hostile_ManyKeys(benchmark::State& state) { MeasureBody<OboloData>(state, 7, kMiB); }

double Max(const std::vector<double>& values) { return *std::max_element(values.begin(), values.end()); }

// A fixed count: each iteration also resets and reads the memory figures.
// "max" over the repetitions is what the limits are judged by.
#define OBOLO_HOSTILE_BENCHMARK(name) \
  BENCHMARK(name)->Iterations(30)->ComputeStatistics("max", Max)->Unit(benchmark::kMicrosecond)

OBOLO_HOSTILE_BENCHMARK(BM_Hostile_FullBid);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_Brackets1MB);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_BracketsAtCap);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_NestedObjects);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_WideUnknownArray);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_WideRecords);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_HugeString);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_EscapedString);
OBOLO_HOSTILE_BENCHMARK(BM_Hostile_ManyKeys);

}  // namespace
}  // namespace obolo::bench
