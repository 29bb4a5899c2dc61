// Figure 3: decoding a whole bid answer (bench/data/full_bid_answer.json:
// every DataSet member, the card's settings and a customerInfo with tokens and
// the customer) into OboloData with the kit's strict decoder, in place, as the
// HTTP session's thread decodes a body. References: simdjson's DOM parse of
// the same bytes (a parse that builds a tree and nothing else; the decoder
// reads with simdjson's On-Demand parser and fills the records instead), and
// nlohmann-json's parse (what the kit's decoder used to start from).

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <simdjson.h>
#include <string>

#include "network/response_records.h"

namespace obolo::bench {
namespace {

const std::string& Answer() {
  static const std::string text = [] {
    std::ifstream file(OBOLO_BENCH_DATA_DIR "/full_bid_answer.json", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }();
  return text;
}

void BM_DecodeBid_Kit(benchmark::State& state) {
  std::string text = Answer();
  auto check = DecodeRecordInPlace<OboloData>(text);
  if (!check || !check.value().data || !check.value().data->customerInfo ||
      !check.value().data->customerInfo->customer) {
    state.SkipWithError(("the answer does not decode in full: " + check.error()).c_str());
    return;
  }
  for (auto _ : state) {
    auto decoded = DecodeRecordInPlace<OboloData>(text);
    benchmark::DoNotOptimize(decoded);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_DecodeBid_Kit)->Unit(benchmark::kMicrosecond);

void BM_DecodeBid_NlohmannParse(benchmark::State& state) {
  const std::string& text = Answer();
  for (auto _ : state) {
    // No callback, no exceptions.
    auto document = nlohmann::json::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
    benchmark::DoNotOptimize(document);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_DecodeBid_NlohmannParse)->Unit(benchmark::kMicrosecond);

void BM_DecodeBid_Simdjson(benchmark::State& state) {
  const simdjson::padded_string text(Answer());
  simdjson::dom::parser parser;
  for (auto _ : state) {
    auto document = parser.parse(text);
    if (document.error()) {
      state.SkipWithError("simdjson refused the answer");
      break;
    }
    benchmark::DoNotOptimize(document);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_DecodeBid_Simdjson)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace obolo::bench
