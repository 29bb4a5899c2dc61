// The images the image benchmarks feed the kit, made in code at first use.

#ifndef OBOLO_BENCH_IMAGE_SAMPLES_H_
#define OBOLO_BENCH_IMAGE_SAMPLES_H_

#include <string>

namespace obolo::bench {

// A decompression bomb: a whole, valid 8000 x 7500 RGBA PNG of one colour,
// compressed as hard as zlib can (about 230 KB that inflate to 240 MB).
const std::string& DecompressionBombPng();
// The bomb's pixel data alone: its zlib stream, and how many bytes it inflates to.
const std::string& DecompressionBombStream();
inline constexpr std::size_t kDecompressionBombRawBytes = 7500ull * (1 + 8000 * 4);

// The sandbox's JPEG logo with its frame header claiming 65000 x 65000, and
// its lossless WebP logo with its header claiming 16384 x 16384 (the format's
// most): small files whose headers promise gigabytes of pixels.
const std::string& JpegClaimingHugeSize();
const std::string& WebpClaimingHugeSize();

// A 512 x 512 picture (gradients, a disc, stripes: what a publisher's logo or
// banner has, neither flat nor noise) in each format.
const std::string& SamplePng();
const std::string& SampleJpeg();
const std::string& SampleWebp();  // lossy, as pictures are served
const std::string& SampleGif();   // the picture reduced to 64 colours
inline constexpr int kSampleSize = 512;

// The same picture at the pixel limit, 4096 x 2048, as PNG: the longest a
// decode of an accepted image takes.
const std::string& LargestPng();

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_IMAGE_SAMPLES_H_
