#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include "toolkit/image_data.h"
#include "toolkit/ui_image.h"

namespace obolo {
namespace {

// A small PNG writer, so each case states exactly which bytes it feeds.
std::string Big32(std::uint32_t value) {
  return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
}

std::string Chunk(const std::string& type, const std::string& data) {
  const std::string body = type + data;
  return Big32(data.size()) + body + Big32(crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size()));
}

std::string Deflate(const std::string& raw) {
  uLongf size = compressBound(raw.size());
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(raw.data()), raw.size());
  out.resize(size);
  return out;
}

// Two rows of an 8-bit RGBA image three pixels wide, unless told otherwise.
struct PngShape {
  std::uint32_t width = 3;
  int depth = 8;
  int color_type = 6;
  char filter = 0;
  bool drop_last_row_byte = false;
};

std::string Header(const PngShape& shape) {
  return "\x89PNG\r\n\x1a\n" + Chunk("IHDR", Big32(shape.width) + Big32(2) + char(shape.depth) +
                                                 char(shape.color_type) + std::string(3, '\0'));
}

std::string Png(const PngShape& shape = {}) {
  const std::size_t row_bytes = (shape.width * (shape.color_type == 6 ? 4 : 1) * shape.depth + 7) / 8;
  std::string rows;
  for (int y = 0; y < 2; ++y) rows += shape.filter + std::string(row_bytes, '\x7f');
  if (shape.drop_last_row_byte) rows.pop_back();
  return Header(shape) + Chunk("IDAT", Deflate(rows)) + Chunk("IEND", "");
}

TEST(ImageDataTest, OnlyWholeImagesCountAndTheyHaveTheirFormatAndSize) {
  // SOI, APP0, SOF0 of 640 x 480 with 3 components, then EOI.
  const std::string jpeg =
      std::string("\xFF\xD8\xFF\xE0\x00\x04\x00\x00\xFF\xC0\x00\x11\x08\x01\xE0\x02\x80\x03", 18) +
      std::string(9, '\x01') + "\xFF\xD9";
  // GIF89a 2 x 1, no colour table, one image descriptor, a little data, trailer.
  const std::string gif(
      "GIF89a\x02\x00\x01\x00\x00\x00\x00\x2C\x00\x00\x00\x00\x02\x00\x01\x00\x00\x02\x02\x44\x01\x00\x3B", 29);
  const std::string stream = Deflate(std::string(2 * 13, '\0'));
  struct Whole {
    const char* what;
    std::string bytes;
    ImageFormat format;
    std::uint32_t width, height;
  } whole[] = {
      {"RGBA", Png(), ImageFormat::png, 3, 2},
      {"one-bit grey", Png({.width = 9, .depth = 1, .color_type = 0}), ImageFormat::png, 9, 2},
      {"pixel data split over two chunks is one stream",
       Header({}) + Chunk("IDAT", stream.substr(0, 5)) + Chunk("IDAT", stream.substr(5)) + Chunk("IEND", ""),
       ImageFormat::png, 3, 2},
      {"JPEG", jpeg, ImageFormat::jpeg, 640, 480},
      {"GIF", gif, ImageFormat::gif, 2, 1},
  };
  for (const auto& c : whole) {
    const auto info = InspectImageData(c.bytes);
    ASSERT_TRUE(info.has_value()) << c.what;
    EXPECT_EQ(info->format, c.format) << c.what;
    EXPECT_EQ(info->width, c.width) << c.what;
    EXPECT_EQ(info->height, c.height) << c.what;
  }

  const std::string good = Png();
  std::string flipped = good;
  flipped[flipped.size() - 20] ^= 0x01;  // inside the pixel data chunk
  struct Case {
    const char* what;
    std::string bytes;
  } damaged[] = {
      {"empty", ""},
      {"truncated", good.substr(0, good.size() - 15)},
      {"no end chunk", good.substr(0, good.size() - 12)},
      {"flipped bit", flipped},
      {"too few pixel bytes", Png({.drop_last_row_byte = true})},
      {"unknown filter type", Png({.filter = 5})},
      {"zero width", Png({.width = 0})},
      {"bad depth for RGBA", Png({.depth = 4})},
      {"palette image without palette", Png({.color_type = 3})},
      {"garbage pixel data", Header({}) + Chunk("IDAT", "not zlib at all") + Chunk("IEND", "")},
      {"JPEG without its end marker", jpeg.substr(0, jpeg.size() - 2)},
      {"an error page", "<html>404 Not Found</html>"},
  };
  for (const auto& c : damaged) EXPECT_FALSE(InspectImageData(c.bytes).has_value()) << c.what;
}

TEST(UIImageTest, TheKitsImagesLoadByNameAndTruncatedBytesAreNoImage) {
  auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  ASSERT_TRUE(kit.has_value());
  for (const char* name : {"checkbox", "blankbox", "background", "wallet-icon"}) {
    EXPECT_NE(UIImage::named(name, kit), nullptr) << name;
  }
  EXPECT_EQ(UIImage::named("no-such-image", kit), nullptr);

  std::ifstream file(*kit->pathForResource("checkbox", "png"), std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  ASSERT_NE(UIImage::fromData(bytes), nullptr);
  EXPECT_EQ(UIImage::fromData(bytes)->data(), bytes);
  EXPECT_EQ(UIImage::fromData(bytes.substr(0, bytes.size() / 2)), nullptr);
}

}  // namespace
}  // namespace obolo
