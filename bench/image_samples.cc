#include "bench/image_samples.h"

#include <zlib.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "sandbox/image_encoders.h"
#include "sandbox/publisher_logo.h"

namespace obolo::bench {
namespace {

constexpr std::uint32_t kBombWidth = 8000;
constexpr std::uint32_t kBombHeight = 7500;

void PutBig32(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift);
}

void PutChunk(std::string& out, const char* type, const std::string& data) {
  PutBig32(out, static_cast<std::uint32_t>(data.size()));
  const std::string body = type + data;
  out += body;
  PutBig32(out,
           static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size())));
}

// `width` x `height` of the picture; `levels` quantises each channel (for GIF).
std::vector<sandbox::Rgba> Picture(int width, int height, int levels = 256) {
  std::vector<sandbox::Rgba> pixels;
  pixels.reserve(std::size_t(width) * height);
  const int step = 256 / levels;
  auto q = [step](double v) { return static_cast<std::uint8_t>(static_cast<int>(v) / step * step); };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double u = double(x) / width, v = double(y) / height;
      const double r = std::hypot(u - 0.5, v - 0.5);
      if (r < 0.3) {
        pixels.push_back({q(242), q(169 - 100 * r), 0});
      } else if ((x / 16 + y / 16) % 2 == 0 && v > 0.8) {
        pixels.push_back({q(33), q(37), q(41)});
      } else {
        pixels.push_back({q(255 * u), q(255 * v), q(255 * (1 - u))});
      }
    }
  }
  return pixels;
}

}  // namespace

const std::string& DecompressionBombStream() {
  static const std::string stream = [] {
    std::string out;
    z_stream z{};
    deflateInit(&z, Z_BEST_COMPRESSION);
    std::vector<unsigned char> row(1 + kBombWidth * 4, 0);  // filter "none", then transparent black
    std::vector<unsigned char> buffer(1 << 16);
    for (std::uint32_t y = 0; y <= kBombHeight; ++y) {
      const bool last = y == kBombHeight;
      z.next_in = last ? nullptr : row.data();
      z.avail_in = last ? 0 : static_cast<uInt>(row.size());
      do {
        z.next_out = buffer.data();
        z.avail_out = static_cast<uInt>(buffer.size());
        deflate(&z, last ? Z_FINISH : Z_NO_FLUSH);
        out.append(reinterpret_cast<const char*>(buffer.data()), buffer.size() - z.avail_out);
      } while (z.avail_out == 0);
    }
    deflateEnd(&z);
    return out;
  }();
  return stream;
}

const std::string& DecompressionBombPng() {
  static const std::string png = [] {
    std::string header;
    PutBig32(header, kBombWidth);
    PutBig32(header, kBombHeight);
    header += std::string("\x08\x06\x00\x00\x00", 5);  // 8-bit RGBA, deflate, no filter set, no interlace
    std::string out = "\x89PNG\r\n\x1a\n";
    PutChunk(out, "IHDR", header);
    PutChunk(out, "IDAT", DecompressionBombStream());
    PutChunk(out, "IEND", "");
    return out;
  }();
  return png;
}

const std::string& JpegClaimingHugeSize() {
  static const std::string jpeg = [] {
    std::string bytes = sandbox::PublisherLogoJpeg();
    const std::size_t frame = bytes.find("\xFF\xC0");  // baseline frame header
    const char size[4] = {char(65000 >> 8), char(65000 & 0xFF), char(65000 >> 8), char(65000 & 0xFF)};
    bytes.replace(frame + 5, 4, size, 4);  // height, then width
    return bytes;
  }();
  return jpeg;
}

const std::string& WebpClaimingHugeSize() {
  static const std::string webp = [] {
    std::string bytes = sandbox::PublisherLogoWebp();
    // After "RIFF", size, "WEBP", "VP8L", chunk size and the signature byte:
    // 14 bits of width - 1 and 14 of height - 1, all ones.
    bytes[21] = bytes[22] = bytes[23] = '\xFF';
    bytes[24] = static_cast<char>(bytes[24] | 0x0F);
    return bytes;
  }();
  return webp;
}

const std::string& SamplePng() {
  static const std::string png =
      sandbox::EncodePng(kSampleSize, kSampleSize, Picture(kSampleSize, kSampleSize));
  return png;
}

const std::string& SampleJpeg() {
  static const std::string jpeg =
      sandbox::EncodeJpeg(kSampleSize, kSampleSize, Picture(kSampleSize, kSampleSize));
  return jpeg;
}

const std::string& SampleWebp() {
  static const std::string webp =
      sandbox::EncodeWebp(kSampleSize, kSampleSize, Picture(kSampleSize, kSampleSize), /*lossless=*/false);
  return webp;
}

const std::string& SampleGif() {
  static const std::string gif =
      sandbox::EncodeGif(kSampleSize, kSampleSize, Picture(kSampleSize, kSampleSize, 4));
  return gif;
}

const std::string& LargestPng() {
  static const std::string png = sandbox::EncodePng(4096, 2048, Picture(4096, 2048));
  return png;
}

}  // namespace obolo::bench
