// Figure 7: decoding a 512 x 512 picture (bench/image_samples.h) in each
// format to premultiplied pixels with DecodeImage, on the calling thread, as
// imageFromURL does on the HTTP session's thread; against the floor of
// copying the decoded pixels once. Also: the largest image the limit lets
// through (4096 x 2048 PNG), how long refusing the decompression bomb takes,
// and what inflating the bomb in full costs (the work the main loop did for
// it before the limit and before decoding moved off the main loop).

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "bench/image_samples.h"
#include "toolkit/image_decoder.h"

namespace obolo::bench {
namespace {

void Decode(benchmark::State& state, const std::string& bytes) {
  const auto check = DecodeImage(bytes);
  if (!check) {
    state.SkipWithError("the sample does not decode");
    return;
  }
  for (auto _ : state) {
    auto image = DecodeImage(bytes);
    benchmark::DoNotOptimize(image);
  }
  state.counters["megapixels"] = static_cast<double>(check->pixels.size()) / 1e6;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * check->pixels.size() * 4));
}

void BM_DecodeImage_Png(benchmark::State& state) { Decode(state, SamplePng()); }
void BM_DecodeImage_Jpeg(benchmark::State& state) { Decode(state, SampleJpeg()); }
void BM_DecodeImage_Webp(benchmark::State& state) { Decode(state, SampleWebp()); }
void BM_DecodeImage_Gif(benchmark::State& state) { Decode(state, SampleGif()); }
void BM_DecodeImage_LargestPng(benchmark::State& state) { Decode(state, LargestPng()); }
BENCHMARK(BM_DecodeImage_Png)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeImage_Jpeg)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeImage_Webp)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeImage_Gif)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeImage_LargestPng)->Unit(benchmark::kMillisecond);

// The floor: the decoded pixels of a picture of `pixels`, copied once.
void CopyPixels(benchmark::State& state, std::size_t pixels) {
  const std::vector<std::uint32_t> source(pixels, 0xFF336699u);
  std::vector<std::uint32_t> copy(pixels);
  for (auto _ : state) {
    std::memcpy(copy.data(), source.data(), pixels * sizeof(std::uint32_t));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * pixels * 4));
}
void BM_DecodeImage_CopyPixels(benchmark::State& state) { CopyPixels(state, kSampleSize * kSampleSize); }
void BM_DecodeImage_CopyLargestPixels(benchmark::State& state) { CopyPixels(state, kMaxImagePixels); }
BENCHMARK(BM_DecodeImage_CopyPixels)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeImage_CopyLargestPixels)->Unit(benchmark::kMillisecond);

void BM_DecodeImage_RefuseBomb(benchmark::State& state) {
  const std::string& bomb = DecompressionBombPng();
  for (auto _ : state) {
    auto image = DecodeImage(bomb);
    if (image) {
      state.SkipWithError("the bomb decoded");
      break;
    }
  }
  state.counters["file_kib"] = static_cast<double>(bomb.size()) / 1024;
}
BENCHMARK(BM_DecodeImage_RefuseBomb)->Unit(benchmark::kMicrosecond);

// Inflating the bomb's pixel data in full into a small buffer: what checking
// it on the main loop cost before.
void BM_ImageBomb_InflateInFull(benchmark::State& state) {
  const std::string& stream = DecompressionBombStream();
  std::vector<unsigned char> buffer(1 << 14);
  for (auto _ : state) {
    z_stream z{};
    inflateInit(&z);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    z.avail_in = static_cast<uInt>(stream.size());
    std::size_t inflated = 0;
    int result = Z_OK;
    while (result == Z_OK) {
      z.next_out = buffer.data();
      z.avail_out = static_cast<uInt>(buffer.size());
      result = inflate(&z, Z_NO_FLUSH);
      inflated += buffer.size() - z.avail_out;
    }
    inflateEnd(&z);
    if (result != Z_STREAM_END || inflated != kDecompressionBombRawBytes) {
      state.SkipWithError("the bomb's stream did not inflate to its size");
      break;
    }
  }
  state.counters["inflated_mib"] = static_cast<double>(kDecompressionBombRawBytes) / (1 << 20);
}
BENCHMARK(BM_ImageBomb_InflateInFull)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace obolo::bench
