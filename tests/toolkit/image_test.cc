#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "toolkit/image_data.h"
#include "toolkit/ui_image.h"

namespace obolo {
namespace {

// --- A small PNG encoder, so each test states exactly which bytes it feeds ---

void PutBig32(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

std::string Chunk(const std::string& type, const std::string& data) {
  std::string out;
  PutBig32(out, static_cast<std::uint32_t>(data.size()));
  const std::string body = type + data;
  out += body;
  PutBig32(out, static_cast<std::uint32_t>(
                    crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()))));
  return out;
}

std::string Deflate(const std::string& raw) {
  uLongf size = compressBound(static_cast<uLong>(raw.size()));
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(raw.data()),
           static_cast<uLong>(raw.size()));
  out.resize(size);
  return out;
}

struct PngShape {
  std::uint32_t width = 3;
  std::uint32_t height = 2;
  int depth = 8;
  int color_type = 6;  // RGBA
  char filter = 0;
  bool drop_last_row_byte = false;
};

std::string Header(const PngShape& shape) {
  std::string ihdr;
  PutBig32(ihdr, shape.width);
  PutBig32(ihdr, shape.height);
  ihdr += static_cast<char>(shape.depth);
  ihdr += static_cast<char>(shape.color_type);
  ihdr += std::string(3, '\0');
  return "\x89PNG\r\n\x1a\n" + Chunk("IHDR", ihdr);
}

std::string RawRows(const PngShape& shape) {
  const int channels = shape.color_type == 6 ? 4 : shape.color_type == 2 ? 3 : 1;
  const std::size_t row_bytes = (shape.width * channels * shape.depth + 7) / 8;
  std::string raw;
  for (std::uint32_t y = 0; y < shape.height; ++y) {
    raw += shape.filter;
    raw += std::string(row_bytes, '\x7f');
  }
  if (shape.drop_last_row_byte) raw.pop_back();
  return raw;
}

std::string Png(const PngShape& shape = {}) {
  return Header(shape) + Chunk("IDAT", Deflate(RawRows(shape))) + Chunk("IEND", "");
}

std::string KitImageBytes(const std::string& name) {
  auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  std::ifstream file(*kit->pathForResource(name, "png"), std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

TEST(ImageDataTest, WellFormedPngsAreImagesOfTheirSize) {
  auto info = InspectImageData(Png({.width = 3, .height = 2}));
  ASSERT_TRUE(info.has_value());
  EXPECT_EQ(info->format, ImageFormat::png);
  EXPECT_EQ(info->width, 3u);
  EXPECT_EQ(info->height, 2u);

  EXPECT_TRUE(InspectImageData(Png({.width = 9, .height = 5, .depth = 1, .color_type = 0})));
  // Pixel data split over two chunks is one stream.
  const PngShape shape{.width = 40, .height = 40};
  const std::string stream = Deflate(RawRows(shape));
  const std::string split = Header(shape) + Chunk("IDAT", stream.substr(0, 10)) +
                            Chunk("IDAT", stream.substr(10)) + Chunk("tEXt", "Comment\0x") +
                            Chunk("IEND", "");
  EXPECT_TRUE(InspectImageData(split));
}

TEST(ImageDataTest, DamagedPngsAreNoImages) {
  const std::string good = Png();
  std::string bad_crc = good;
  bad_crc[bad_crc.size() - 20] ^= 0x01;  // inside the pixel data chunk
  std::string bad_signature = good;
  bad_signature[1] = 'Q';
  const PngShape shape;

  struct Case {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"empty", ""},
      {"truncated", good.substr(0, good.size() - 15)},
      {"no end chunk", good.substr(0, good.size() - 12)},
      {"flipped bit", bad_crc},
      {"bad signature", bad_signature},
      {"too few pixel bytes", Png({.drop_last_row_byte = true})},
      {"unknown filter type", Png({.filter = 5})},
      {"zero width", Png({.width = 0})},
      {"bad depth for RGBA", Png({.depth = 4})},
      {"palette image without palette", Png({.depth = 8, .color_type = 3})},
      {"no pixel data", Header(shape) + Chunk("IEND", "")},
      {"garbage pixel data", Header(shape) + Chunk("IDAT", "not zlib at all") + Chunk("IEND", "")},
      {"text", "<html>404 Not Found</html>"},
  };
  for (const auto& c : cases) EXPECT_FALSE(InspectImageData(c.bytes).has_value()) << c.what;
}

TEST(ImageDataTest, JpegAndGifAreRecognisedByTheirHeaders) {
  // SOI, APP0 (JFIF), SOF0 of 640 x 480 with 3 components, then EOI.
  const std::string jpeg = std::string("\xFF\xD8", 2) + std::string("\xFF\xE0\x00\x04\x00\x00", 6) +
                           std::string("\xFF\xC0\x00\x11\x08\x01\xE0\x02\x80\x03", 10) +
                           std::string(9, '\x01') + std::string("\xFF\xD9", 2);
  auto info = InspectImageData(jpeg);
  ASSERT_TRUE(info.has_value());
  EXPECT_EQ(info->format, ImageFormat::jpeg);
  EXPECT_EQ(info->width, 640u);
  EXPECT_EQ(info->height, 480u);
  EXPECT_FALSE(InspectImageData(jpeg.substr(0, jpeg.size() - 2))) << "without its end marker";

  // GIF89a 2 x 1, no colour table, one image descriptor, a little data, trailer.
  const std::string gif = std::string("GIF89a\x02\x00\x01\x00\x00\x00\x00", 13) +
                          std::string("\x2C\x00\x00\x00\x00\x02\x00\x01\x00\x00", 10) +
                          std::string("\x02\x02\x44\x01\x00\x3B", 6);
  info = InspectImageData(gif);
  ASSERT_TRUE(info.has_value());
  EXPECT_EQ(info->format, ImageFormat::gif);
  EXPECT_EQ(info->width, 2u);
  EXPECT_FALSE(InspectImageData(std::string("GIF89a\x02\x00\x01\x00\x00\x00\x00\x3B", 14)))
      << "no image in it";
}

TEST(UIImageTest, FromDataKeepsTheBytesOnlyForRealImages) {
  const std::string bytes = KitImageBytes("checkbox");
  auto image = UIImage::fromData(bytes);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->data(), bytes);
  EXPECT_EQ(image->size(), (CGSize{64, 64}));
  EXPECT_EQ(image->renderingMode(), UIImageRenderingMode::automatic);
  EXPECT_EQ(UIImage::fromData("{\"error\": \"not found\"}"), nullptr);
  EXPECT_EQ(UIImage::fromData(bytes.substr(0, bytes.size() / 2)), nullptr);
}

TEST(UIImageTest, TheKitsImagesLoadByNameFromItsBundle) {
  auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  for (const char* name : {"checkbox", "blankbox", "background", "wallet-icon"}) {
    auto image = UIImage::named(name, kit);
    ASSERT_NE(image, nullptr) << name;
    EXPECT_EQ(image->name(), name);
    EXPECT_GT(image->size().width, 0);
  }
  EXPECT_EQ(UIImage::named("background", kit)->size(), (CGSize{750, 348}));
  EXPECT_EQ(UIImage::named("no-such-image", kit), nullptr);
  EXPECT_EQ(UIImage::named("checkbox"), nullptr) << "the main bundle (the test's directory) has no images";
}

TEST(UIImageTest, AFileThatIsNotAValidImageIsNoImage) {
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / ("obolo-image-test-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  std::ofstream(dir / "Info.json") << R"({"identifier": "com.example.images"})";
  std::ofstream(dir / "broken.png", std::ios::binary) << KitImageBytes("checkbox").substr(0, 100);
  auto bundle = Bundle::atPath(dir);
  ASSERT_TRUE(bundle.has_value());
  EXPECT_EQ(UIImage::named("broken", bundle), nullptr);
  fs::remove_all(dir);
}

TEST(UIImageTest, RenderingModeCopyKeepsTheImage) {
  auto image = UIImage::named("wallet-icon", Bundle::withIdentifier(Bundle::kKitIdentifier));
  ASSERT_NE(image, nullptr);
  auto templ = image->withRenderingMode(UIImageRenderingMode::alwaysTemplate);
  EXPECT_EQ(static_cast<int>(templ->renderingMode()), 2);
  EXPECT_EQ(templ->data(), image->data());
  EXPECT_EQ(templ->name(), "wallet-icon");
  EXPECT_EQ(image->renderingMode(), UIImageRenderingMode::automatic) << "the original is unchanged";
}

}  // namespace
}  // namespace obolo
