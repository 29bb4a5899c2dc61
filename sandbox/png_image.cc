#include "sandbox/png_image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace obolo::sandbox {
namespace {

std::uint32_t Crc32(const std::string& bytes, std::size_t from) {
  static const std::array<std::uint32_t, 256> table = [] {
    std::array<std::uint32_t, 256> t{};
    for (std::uint32_t n = 0; n < 256; ++n) {
      std::uint32_t c = n;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
      t[n] = c;
    }
    return t;
  }();
  std::uint32_t crc = 0xFFFFFFFFu;
  for (std::size_t i = from; i < bytes.size(); ++i) {
    crc = table[(crc ^ static_cast<std::uint8_t>(bytes[i])) & 0xFF] ^ (crc >> 8);
  }
  return crc ^ 0xFFFFFFFFu;
}

std::uint32_t Adler32(const std::string& bytes) {
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (char c : bytes) {
    a = (a + static_cast<std::uint8_t>(c)) % 65521;
    b = (b + a) % 65521;
  }
  return (b << 16) | a;
}

void PutU32(std::string& out, std::uint32_t value) {
  out += static_cast<char>(value >> 24);
  out += static_cast<char>(value >> 16);
  out += static_cast<char>(value >> 8);
  out += static_cast<char>(value);
}

void PutChunk(std::string& out, const char* type, const std::string& data) {
  PutU32(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t crc_from = out.size();
  out += type;
  out += data;
  PutU32(out, Crc32(out, crc_from));
}

// A zlib stream of `raw` in stored (uncompressed) deflate blocks.
std::string ZlibStored(const std::string& raw) {
  std::string out = "\x78\x01";
  std::size_t offset = 0;
  do {
    const std::size_t length = std::min<std::size_t>(raw.size() - offset, 65535);
    const bool last = offset + length == raw.size();
    out += static_cast<char>(last ? 1 : 0);
    out += static_cast<char>(length & 0xFF);
    out += static_cast<char>(length >> 8);
    out += static_cast<char>(~length & 0xFF);
    out += static_cast<char>((~length >> 8) & 0xFF);
    out.append(raw, offset, length);
    offset += length;
  } while (offset < raw.size());
  PutU32(out, Adler32(raw));
  return out;
}

}  // namespace

std::string EncodePng(int width, int height, const std::vector<Rgb>& pixels) {
  std::string out = "\x89PNG\r\n\x1a\n";
  std::string header;
  PutU32(header, static_cast<std::uint32_t>(width));
  PutU32(header, static_cast<std::uint32_t>(height));
  header += '\x08';  // bit depth
  header += '\x02';  // colour type: RGB
  header += '\x00';  // compression: deflate
  header += '\x00';  // filter method 0
  header += '\x00';  // no interlace
  PutChunk(out, "IHDR", header);

  std::string raw;
  raw.reserve(static_cast<std::size_t>(height) * (1 + 3 * static_cast<std::size_t>(width)));
  for (int y = 0; y < height; ++y) {
    raw += '\x00';  // filter type None
    for (int x = 0; x < width; ++x) {
      const Rgb& p = pixels[static_cast<std::size_t>(y) * width + x];
      raw += static_cast<char>(p.r);
      raw += static_cast<char>(p.g);
      raw += static_cast<char>(p.b);
    }
  }
  PutChunk(out, "IDAT", ZlibStored(raw));
  PutChunk(out, "IEND", "");
  return out;
}

const std::string& PublisherLogoPng() {
  static const std::string png = [] {
    constexpr int kSize = 64;
    const Rgb background{255, 255, 255};
    const Rgb disc{242, 169, 0};
    const Rgb ink{33, 37, 41};
    std::vector<Rgb> pixels(kSize * kSize, background);
    for (int y = 0; y < kSize; ++y) {
      for (int x = 0; x < kSize; ++x) {
        const double r = std::hypot(x + 0.5 - kSize / 2.0, y + 0.5 - kSize / 2.0);
        Rgb& p = pixels[y * kSize + x];
        if (r < 30) p = disc;
        if (r >= 12 && r < 20) p = ink;  // the "O"
      }
    }
    return EncodePng(kSize, kSize, pixels);
  }();
  return png;
}

}  // namespace obolo::sandbox
