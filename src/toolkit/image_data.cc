#include "toolkit/image_data.h"

#include <zlib.h>

#include <array>
#include <cstring>
#include <vector>

namespace obolo {
namespace {

// Images whose raw pixel rows would exceed this are refused rather than
// inflated: no logo or icon comes near it.
constexpr std::uint64_t kMaxRawImageBytes = 256ull * 1024 * 1024;

std::uint32_t Big32(const unsigned char* p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}
std::uint32_t Big16(const unsigned char* p) { return (std::uint32_t{p[0]} << 8) | p[1]; }
std::uint32_t Little16(const unsigned char* p) { return (std::uint32_t{p[1]} << 8) | p[0]; }

// --- PNG ---

struct PngHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned depth = 0;
  unsigned color_type = 0;
  unsigned interlace = 0;
};

bool ValidDepthForColorType(unsigned color_type, unsigned depth) {
  switch (color_type) {
    case 0:
      return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3:
      return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6:
      return depth == 8 || depth == 16;
    default:
      return false;
  }
}

unsigned ChannelsOf(unsigned color_type) {
  switch (color_type) {
    case 2:
      return 3;
    case 4:
      return 2;
    case 6:
      return 4;
    default:
      return 1;
  }
}

// The filtered rows a PNG's pixel data must inflate to: per pass (one, or
// seven for Adam7 interlacing), a number of rows of a number of bytes, each
// row led by its filter-type byte.
class RowLayout {
 public:
  explicit RowLayout(const PngHeader& header) {
    const std::uint64_t bits_per_pixel = std::uint64_t{header.depth} * ChannelsOf(header.color_type);
    auto add_pass = [&](std::uint32_t columns, std::uint32_t rows) {
      if (columns == 0 || rows == 0) return;
      const std::uint64_t row_bytes = 1 + (columns * bits_per_pixel + 7) / 8;
      passes_.push_back({rows, row_bytes});
      total_ += rows * row_bytes;
    };
    if (header.interlace == 0) {
      add_pass(header.width, header.height);
    } else {
      static constexpr std::array<std::array<std::uint32_t, 4>, 7> kAdam7 = {{
          {0, 0, 8, 8},
          {4, 0, 8, 8},
          {0, 4, 4, 8},
          {2, 0, 4, 4},
          {0, 2, 2, 4},
          {1, 0, 2, 2},
          {0, 1, 1, 2},
      }};
      for (const auto& [x0, y0, dx, dy] : kAdam7) {
        const std::uint32_t columns = header.width > x0 ? (header.width - x0 + dx - 1) / dx : 0;
        const std::uint32_t rows = header.height > y0 ? (header.height - y0 + dy - 1) / dy : 0;
        add_pass(columns, rows);
      }
    }
  }

  std::uint64_t totalBytes() const { return total_; }

  // Checks the next inflated bytes; false on a bad filter byte or on more
  // bytes than the image has.
  bool consume(const unsigned char* data, std::size_t size) {
    for (std::size_t i = 0; i < size;) {
      if (pass_ >= passes_.size()) return false;
      const Pass& pass = passes_[pass_];
      if (offset_in_row_ == 0 && data[i] > 4) return false;
      const std::uint64_t take = std::min<std::uint64_t>(pass.row_bytes - offset_in_row_, size - i);
      i += take;
      offset_in_row_ += take;
      if (offset_in_row_ == pass.row_bytes) {
        offset_in_row_ = 0;
        if (++row_ == pass.rows) {
          row_ = 0;
          ++pass_;
        }
      }
    }
    return true;
  }

  bool complete() const { return pass_ == passes_.size(); }

 private:
  struct Pass {
    std::uint64_t rows;
    std::uint64_t row_bytes;
  };
  std::vector<Pass> passes_;
  std::uint64_t total_ = 0;
  std::size_t pass_ = 0;
  std::uint64_t row_ = 0;
  std::uint64_t offset_in_row_ = 0;
};

class Inflater {
 public:
  Inflater() { ok_ = inflateInit(&stream_) == Z_OK; }
  ~Inflater() {
    if (ok_) inflateEnd(&stream_);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  // Feeds compressed bytes; false when the stream is corrupt or the rows are.
  bool feed(const unsigned char* data, std::size_t size, RowLayout& rows) {
    if (!ok_) return false;
    if (finished_) return true;  // bytes after the stream's end are ignored, as decoders do
    stream_.next_in = const_cast<unsigned char*>(data);
    stream_.avail_in = static_cast<uInt>(size);
    unsigned char buffer[16384];
    while (stream_.avail_in > 0 && !finished_) {
      stream_.next_out = buffer;
      stream_.avail_out = sizeof buffer;
      const int result = inflate(&stream_, Z_NO_FLUSH);
      if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) return false;
      const std::size_t produced = sizeof buffer - stream_.avail_out;
      if (!rows.consume(buffer, produced)) return false;
      if (result == Z_STREAM_END) finished_ = true;
      if (result == Z_BUF_ERROR && produced == 0) break;
    }
    return true;
  }

  bool finished() const { return finished_; }

 private:
  z_stream stream_{};
  bool ok_ = false;
  bool finished_ = false;
};

std::optional<ImageInfo> InspectPng(std::string_view bytes) {
  static constexpr unsigned char kSignature[8] = {137, 80, 78, 71, 13, 10, 26, 10};
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t size = bytes.size();
  if (size < 8 || std::memcmp(data, kSignature, 8) != 0) return std::nullopt;

  std::optional<PngHeader> header;
  std::optional<RowLayout> rows;
  Inflater inflater;
  bool have_palette = false;
  bool in_data = false;
  bool data_ended = false;
  bool ended = false;

  for (std::size_t pos = 8; pos + 12 <= size;) {
    const std::uint32_t length = Big32(data + pos);
    if (length > 0x7fffffffu || length > size - pos - 12) return std::nullopt;
    const unsigned char* type = data + pos + 4;
    const unsigned char* body = data + pos + 8;
    const std::uint32_t stored_crc = Big32(body + length);
    if (crc32(crc32(0, nullptr, 0), type, length + 4) != stored_crc) return std::nullopt;
    for (int i = 0; i < 4; ++i) {
      const unsigned char c = type[i];
      if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) return std::nullopt;
    }
    const std::string_view name(reinterpret_cast<const char*>(type), 4);
    pos += 12 + std::size_t{length};

    if (!header) {
      if (name != "IHDR" || length != 13) return std::nullopt;
      PngHeader h{Big32(body), Big32(body + 4), body[8], body[9], body[12]};
      if (h.width == 0 || h.height == 0 || h.width > 0x7fffffffu || h.height > 0x7fffffffu)
        return std::nullopt;
      if (!ValidDepthForColorType(h.color_type, h.depth)) return std::nullopt;
      if (body[10] != 0 || body[11] != 0 || h.interlace > 1) return std::nullopt;
      header = h;
      rows.emplace(h);
      if (rows->totalBytes() > kMaxRawImageBytes) return std::nullopt;
      continue;
    }
    if (name == "IDAT") {
      if (data_ended) return std::nullopt;  // pixel data must be one run of chunks
      if (header->color_type == 3 && !have_palette) return std::nullopt;
      in_data = true;
      if (!inflater.feed(body, length, *rows)) return std::nullopt;
      continue;
    }
    if (in_data) data_ended = true;
    if (name == "IEND") {
      ended = true;
      break;
    }
    if (name == "IHDR") return std::nullopt;
    if (name == "PLTE") {
      if (in_data || length == 0 || length % 3 != 0 || length / 3 > 256) return std::nullopt;
      have_palette = true;
      continue;
    }
    if (name[0] >= 'A' && name[0] <= 'Z') return std::nullopt;  // an unknown critical chunk
  }

  if (!ended || !in_data || !inflater.finished() || !rows->complete()) return std::nullopt;
  return ImageInfo{ImageFormat::png, header->width, header->height};
}

// --- JPEG ---

bool IsStartOfFrame(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<ImageInfo> InspectJpeg(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t size = bytes.size();
  if (size < 4 || data[0] != 0xFF || data[1] != 0xD8) return std::nullopt;
  if (data[size - 2] != 0xFF || data[size - 1] != 0xD9) return std::nullopt;

  for (std::size_t pos = 2; pos + 1 < size;) {
    if (data[pos] != 0xFF) return std::nullopt;
    while (pos < size && data[pos] == 0xFF) ++pos;  // fill bytes
    if (pos >= size) return std::nullopt;
    const unsigned marker = data[pos++];
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) continue;  // no length
    if (marker == 0xD9 || marker == 0xDA) return std::nullopt;           // end or scan before a frame
    if (pos + 2 > size) return std::nullopt;
    const std::uint32_t length = Big16(data + pos);
    if (length < 2 || pos + length > size) return std::nullopt;
    if (IsStartOfFrame(marker)) {
      if (length < 8) return std::nullopt;
      const std::uint32_t height = Big16(data + pos + 3);
      const std::uint32_t width = Big16(data + pos + 5);
      const unsigned components = data[pos + 7];
      if (width == 0 || height == 0 || components == 0 || components > 4) return std::nullopt;
      return ImageInfo{ImageFormat::jpeg, width, height};
    }
    pos += length;
  }
  return std::nullopt;
}

// --- GIF ---

std::optional<ImageInfo> InspectGif(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t size = bytes.size();
  if (size < 14 || (bytes.substr(0, 6) != "GIF87a" && bytes.substr(0, 6) != "GIF89a")) return std::nullopt;
  if (data[size - 1] != 0x3B) return std::nullopt;
  const std::uint32_t width = Little16(data + 6);
  const std::uint32_t height = Little16(data + 8);
  if (width == 0 || height == 0) return std::nullopt;
  std::size_t pos = 13;
  if (data[10] & 0x80) pos += 3u * (2u << (data[10] & 0x07));  // global colour table

  while (pos < size) {
    const unsigned char block = data[pos];
    if (block == 0x2C) {
      return pos + 10 <= size ? std::optional<ImageInfo>(ImageInfo{ImageFormat::gif, width, height})
                              : std::nullopt;
    }
    if (block != 0x21 || pos + 2 >= size) return std::nullopt;   // only extensions may come first
    pos += 2;                                                    // introducer and label
    while (pos < size && data[pos] != 0) pos += 1u + data[pos];  // sub-blocks
    ++pos;                                                       // terminator
  }
  return std::nullopt;
}

}  // namespace

std::optional<ImageInfo> InspectImageData(std::string_view bytes) {
  if (auto png = InspectPng(bytes)) return png;
  if (auto jpeg = InspectJpeg(bytes)) return jpeg;
  return InspectGif(bytes);
}

}  // namespace obolo
