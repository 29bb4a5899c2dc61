#include "toolkit/image_decoder.h"

#include <gif_lib.h>
#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// jpeglib.h uses FILE and size_t without including their headers.
// clang-format off
#include <cstdio>
#include <jpeglib.h>
// clang-format on

#include "sandbox/image_encoders.h"
#include "sandbox/publisher_logo.h"
#include "support/pixels.h"

namespace obolo {
namespace {

using sandbox::Rgba;
using testing::Argb;
using testing::ChannelDistance;
using testing::Opaque;
using testing::PixelAt;

constexpr Rgba kRed{220, 30, 40};
constexpr Rgba kGreen{20, 200, 60};
constexpr Rgba kBlue{30, 40, 210};
constexpr Rgba kWhite{255, 255, 255};
constexpr Rgba kClear{0, 0, 0, 0};
constexpr Rgba kHalfOrange{200, 100, 50, 128};
// kHalfOrange premultiplied: each colour channel times 128/255, rounded.
constexpr std::uint32_t kHalfOrangePixel = Argb(128, 100, 50, 25);

constexpr int kCard = 32;  // the test card's side
constexpr int kHalf = kCard / 2;

// A test card in four flat quadrants: red, green over blue, white. With
// `alpha`, pixel (1, 1) is transparent and (2, 1) half-transparent; with
// `transparent`, only (1, 1).
std::vector<Rgba> Quadrants(bool transparent = false, bool alpha = false) {
  std::vector<Rgba> pixels;
  for (int y = 0; y < kCard; ++y) {
    for (int x = 0; x < kCard; ++x) {
      pixels.push_back(y < kHalf ? (x < kHalf ? kRed : kGreen) : (x < kHalf ? kBlue : kWhite));
    }
  }
  if (transparent || alpha) pixels[kCard + 1] = kClear;
  if (alpha) pixels[kCard + 2] = kHalfOrange;
  return pixels;
}

// Lossy formats blur colour across the edges between quadrants (JPEG and
// lossy WebP keep colour at a quarter of the pixels); they are held to the
// colours only this far from an edge.
constexpr int kLossyMargin = 4;
bool NearAnEdge(std::uint32_t x, std::uint32_t y) {
  auto near = [](int v) {
    return std::abs(v - kHalf) < kLossyMargin || std::abs(v - (kHalf - 1)) < kLossyMargin;
  };
  return near(static_cast<int>(x)) || near(static_cast<int>(y));
}

std::uint32_t Expected(const Rgba& c) {
  if (c == kHalfOrange) return kHalfOrangePixel;
  return c.a == 0 ? 0 : Opaque(c);
}

// A PNG in one of libpng's simplified layouts (grey, palette, 16-bit...).
std::string WritePng(png_uint_32 format, int width, int height, const void* pixels,
                     const void* colormap = nullptr, int colormap_entries = 0) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  image.colormap_entries = colormap_entries;
  png_alloc_size_t size = 0;
  EXPECT_TRUE(png_image_write_to_memory(&image, nullptr, &size, 0, pixels, 0, colormap)) << image.message;
  std::string png(size, '\0');
  EXPECT_TRUE(png_image_write_to_memory(&image, png.data(), &size, 0, pixels, 0, colormap)) << image.message;
  png.resize(size);
  return png;
}

// A flat CMYK JPEG, as print workflows write them: Adobe's inverted
// convention, which libjpeg marks with an Adobe marker.
std::string WriteCmykJpeg(int size, const unsigned char cmyk[4]) {
  jpeg_compress_struct cinfo{};
  jpeg_error_mgr errors{};
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_compress(&cinfo);
  unsigned char* output = nullptr;
  unsigned long output_size = 0;
  jpeg_mem_dest(&cinfo, &output, &output_size);
  cinfo.image_width = size;
  cinfo.image_height = size;
  cinfo.input_components = 4;
  cinfo.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, 95, TRUE);
  jpeg_start_compress(&cinfo, TRUE);
  std::vector<unsigned char> row(size * 4);
  for (int x = 0; x < size; ++x) std::memcpy(&row[x * 4], cmyk, 4);
  while (cinfo.next_scanline < cinfo.image_height) {
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&cinfo, rows, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  std::string jpeg(reinterpret_cast<char*>(output), output_size);
  std::free(output);
  return jpeg;
}

int AppendGifBytes(GifFileType* gif, const GifByteType* data, int length) {
  static_cast<std::string*>(gif->UserData)->append(reinterpret_cast<const char*>(data), length);
  return length;
}

// An animation on a 4 x 3 screen: a red 2 x 2 frame at (1, 1), then a blue
// frame over the whole screen.
std::string TwoFrameGif() {
  std::string bytes;
  int error = 0;
  GifFileType* gif = EGifOpen(&bytes, AppendGifBytes, &error);
  GifColorType colours[2] = {{kRed.r, kRed.g, kRed.b}, {kBlue.r, kBlue.g, kBlue.b}};
  ColorMapObject* map = GifMakeMapObject(2, colours);
  EGifSetGifVersion(gif, true);
  EXPECT_EQ(EGifPutScreenDesc(gif, 4, 3, 8, 0, map), GIF_OK);
  GifPixelType red[2] = {0, 0};
  EXPECT_EQ(EGifPutImageDesc(gif, 1, 1, 2, 2, false, nullptr), GIF_OK);
  for (int row = 0; row < 2; ++row) EXPECT_EQ(EGifPutLine(gif, red, 2), GIF_OK);
  GifPixelType blue[4] = {1, 1, 1, 1};
  EXPECT_EQ(EGifPutImageDesc(gif, 0, 0, 4, 3, false, nullptr), GIF_OK);
  for (int row = 0; row < 3; ++row) EXPECT_EQ(EGifPutLine(gif, blue, 4), GIF_OK);
  EGifCloseFile(gif, &error);
  GifFreeMapObject(map);
  return bytes;
}

void PutBig32(std::string& bytes, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

// The PNG with its header claiming another size (its CRC made right again).
std::string PngClaiming(std::string png, std::uint32_t width, std::uint32_t height) {
  PutBig32(png, 16, width);  // IHDR's data starts after the signature, length and type
  PutBig32(png, 20, height);
  const auto* chunk = reinterpret_cast<const Bytef*>(png.data() + 12);
  PutBig32(png, 29, static_cast<std::uint32_t>(crc32(0, chunk, 4 + 13)));
  return png;
}

// The JPEG with its frame header claiming another size.
std::string JpegClaiming(std::string jpeg, std::uint16_t width, std::uint16_t height) {
  const std::size_t frame = jpeg.find("\xFF\xC0");
  EXPECT_NE(frame, std::string::npos);
  jpeg[frame + 5] = static_cast<char>(height >> 8);
  jpeg[frame + 6] = static_cast<char>(height);
  jpeg[frame + 7] = static_cast<char>(width >> 8);
  jpeg[frame + 8] = static_cast<char>(width);
  return jpeg;
}

// A lossless WebP with its header claiming 16384 x 16384, the format's most:
// 14 bits each of width - 1 and height - 1, all ones.
std::string WebpClaimingMost(std::string webp) {
  EXPECT_EQ(webp.substr(12, 4), "VP8L");
  webp[21] = webp[22] = webp[23] = '\xFF';
  webp[24] = static_cast<char>(webp[24] | 0x0F);
  return webp;
}

// The GIF with its logical screen claiming another size.
std::string GifClaiming(std::string gif, std::uint16_t width, std::uint16_t height) {
  gif[6] = static_cast<char>(width);
  gif[7] = static_cast<char>(width >> 8);
  gif[8] = static_cast<char>(height);
  gif[9] = static_cast<char>(height >> 8);
  return gif;
}

std::vector<Rgba> Flat(int width, int height, Rgba colour = kBlue) {
  return std::vector<Rgba>(std::size_t(width) * height, colour);
}

TEST(ImageDecoderTest, EachFormatDecodesToItsPixels) {
  const std::vector<std::uint16_t> linear = [] {
    // 16-bit linear RGBA, 2 x 1: opaque full red, then transparent.
    return std::vector<std::uint16_t>{65535, 0, 0, 65535, 0, 0, 0, 0};
  }();
  const std::vector<unsigned char> grey = {0, 64, 128, 255};
  const unsigned char palette[] = {kRed.r, kRed.g, kRed.b, 255, kBlue.r, kBlue.g, kBlue.b, 255};
  const std::vector<unsigned char> indices = {0, 1, 1, 0};
  struct Case {
    const char* what;
    std::string bytes;
    int width;
    std::vector<Rgba> expected;
    int tolerance;  // per channel; lossy formats also skip the quadrants' edges
  } cases[] = {
      {"PNG", sandbox::EncodePng(kCard, kCard, Quadrants(true, true)), kCard, Quadrants(true, true), 0},
      {"WebP, lossless", sandbox::EncodeWebp(kCard, kCard, Quadrants(true, true), true), kCard,
       Quadrants(true, true), 0},
      {"GIF", sandbox::EncodeGif(kCard, kCard, Quadrants(true)), kCard, Quadrants(true), 0},
      {"GIF, interlaced", sandbox::EncodeGif(kCard, kCard, Quadrants(true), true), kCard, Quadrants(true), 0},
      {"JPEG", sandbox::EncodeJpeg(kCard, kCard, Quadrants(), 95), kCard, Quadrants(), 8},
      {"JPEG, progressive", sandbox::EncodeJpeg(kCard, kCard, Quadrants(), 95, true), kCard, Quadrants(), 8},
      {"WebP, lossy", sandbox::EncodeWebp(kCard, kCard, Quadrants(), false, 95), kCard, Quadrants(), 12},
      {"PNG, greyscale",
       WritePng(PNG_FORMAT_GRAY, 4, 1, grey.data()),
       4,
       {{0, 0, 0}, {64, 64, 64}, {128, 128, 128}, {255, 255, 255}},
       0},
      {"PNG, palette",
       WritePng(PNG_FORMAT_RGBA_COLORMAP, 2, 2, indices.data(), palette, 2),
       2,
       {kRed, kBlue, kBlue, kRed},
       0},
      {"PNG, 16-bit linear",
       WritePng(PNG_FORMAT_LINEAR_RGB_ALPHA, 2, 1, linear.data()),
       2,
       {{255, 0, 0}, kClear},
       0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_FALSE(c.bytes.empty());
    const auto image = DecodeImage(c.bytes);
    ASSERT_TRUE(image.has_value());
    const auto height = static_cast<std::uint32_t>(c.expected.size() / c.width);
    ASSERT_EQ(image->width, static_cast<std::uint32_t>(c.width));
    ASSERT_EQ(image->height, height);
    ASSERT_EQ(image->pixels.size(), c.expected.size());
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < image->width; ++x) {
        if (c.tolerance > 0 && NearAnEdge(x, y)) continue;
        const std::uint32_t want = Expected(c.expected[y * c.width + x]);
        ASSERT_LE(ChannelDistance(PixelAt(*image, x, y), want), c.tolerance)
            << "at (" << x << ", " << y << "): " << std::hex << PixelAt(*image, x, y) << " for " << want;
      }
    }
  }
}

TEST(ImageDecoderTest, TranslucentPixelsComePremultipliedAsCairoDrawsThem) {
  // Straight colour and alpha in, each colour channel times alpha / 255
  // (rounded) out, in native-order ARGB.
  const std::vector<Rgba> straight = {
      {255, 255, 255, 128}, kHalfOrange, {255, 0, 0, 1}, {10, 20, 30, 0}, {9, 99, 199, 255}};
  const std::vector<std::uint32_t> premultiplied = {Argb(128, 128, 128, 128), kHalfOrangePixel,
                                                    Argb(1, 1, 0, 0), 0, Argb(255, 9, 99, 199)};
  const int n = static_cast<int>(straight.size());
  for (const auto& [what, bytes] : {std::pair{"PNG", sandbox::EncodePng(n, 1, straight)},
                                    std::pair{"WebP", sandbox::EncodeWebp(n, 1, straight, true)}}) {
    SCOPED_TRACE(what);
    const auto image = DecodeImage(bytes);
    ASSERT_TRUE(image.has_value());
    EXPECT_EQ(image->pixels, premultiplied);
  }
}

TEST(ImageDecoderTest, AGifShowsItsFirstFrameOnItsLogicalScreen) {
  const auto image = DecodeImage(TwoFrameGif());
  ASSERT_TRUE(image.has_value());
  ASSERT_EQ(image->width, 4u);
  ASSERT_EQ(image->height, 3u);
  const std::uint32_t r = Opaque(kRed);
  EXPECT_EQ(image->pixels, (std::vector<std::uint32_t>{0, 0, 0, 0, 0, r, r, 0, 0, r, r, 0}))
      << "the first frame where it lies, transparent around it, and nothing of the second";
}

TEST(ImageDecoderTest, AFourColourJpegShowsItsColours) {
  // Adobe's inverted CMYK: 255 is no ink. No cyan, full magenta and yellow,
  // no black: red.
  const unsigned char red_ink[4] = {255, 0, 0, 255};
  const auto image = DecodeImage(WriteCmykJpeg(16, red_ink));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->width, 16u);
  EXPECT_LE(ChannelDistance(PixelAt(*image, 5, 5), Argb(255, 255, 0, 0)), 4)
      << std::hex << PixelAt(*image, 5, 5);
}

TEST(ImageDecoderTest, ImagesBeyondThePixelLimitAreRefusedAndThoseWithinItDecode) {
  ASSERT_EQ(kMaxImageSide, 8192u);
  ASSERT_EQ(kMaxImagePixels, 4096u * 2048u);
  const auto side = static_cast<int>(kMaxImageSide);
  struct Case {
    const char* what;
    std::string bytes;
    bool decodes;
  } cases[] = {
      {"PNG as wide as allowed", sandbox::EncodePng(side, 1, Flat(side, 1)), true},
      {"PNG a pixel wider", sandbox::EncodePng(side + 1, 1, Flat(side + 1, 1)), false},
      {"PNG a pixel taller", sandbox::EncodePng(1, side + 1, Flat(1, side + 1)), false},
      {"JPEG as wide as allowed", sandbox::EncodeJpeg(side, 8, Flat(side, 8)), true},
      {"JPEG a pixel wider", sandbox::EncodeJpeg(side + 1, 8, Flat(side + 1, 8)), false},
      {"WebP as wide as allowed", sandbox::EncodeWebp(side, 1, Flat(side, 1), true), true},
      {"WebP a pixel wider", sandbox::EncodeWebp(side + 1, 1, Flat(side + 1, 1), true), false},
      {"GIF as wide as allowed", sandbox::EncodeGif(side, 1, Flat(side, 1)), true},
      {"GIF a pixel wider", sandbox::EncodeGif(side + 1, 1, Flat(side + 1, 1)), false},
      // A whole, valid image of as many pixels as allowed, and one a row
      // bigger: 33 KB of PNG that would inflate to 33 MB.
      {"PNG of as many pixels as allowed", sandbox::EncodePng(4096, 2048, Flat(4096, 2048)), true},
      {"PNG a row bigger", sandbox::EncodePng(4096, 2049, Flat(4096, 2049)), false},
      {"JPEG a row bigger", sandbox::EncodeJpeg(4096, 2049, Flat(4096, 2049)), false},
      // Small files whose headers claim what no phone could hold.
      {"PNG claiming a million pixels square", PngClaiming(sandbox::PublisherLogoPng(), 1'000'000, 1'000'000),
       false},
      {"JPEG claiming 65000 pixels square", JpegClaiming(sandbox::PublisherLogoJpeg(), 65000, 65000), false},
      {"WebP claiming 16384 pixels square", WebpClaimingMost(sandbox::PublisherLogoWebp()), false},
      {"GIF claiming 65535 pixels square", GifClaiming(sandbox::PublisherLogoGif(), 65535, 65535), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_FALSE(c.bytes.empty());
    const auto image = DecodeImage(c.bytes);
    EXPECT_EQ(image.has_value(), c.decodes);
    if (image) {
      EXPECT_LE(ChannelDistance(image->pixels.front(), Opaque(kBlue)), 8) << "(JPEG is lossy)";
    }
  }
}

TEST(ImageDecoderTest, TruncatedOrDamagedFilesAreNoImage) {
  struct Logo {
    const char* what;
    const std::string& bytes;
  } logos[] = {
      {"PNG", sandbox::PublisherLogoPng()},
      {"JPEG", sandbox::PublisherLogoJpeg()},
      {"WebP", sandbox::PublisherLogoWebp()},
      {"GIF", sandbox::PublisherLogoGif()},
  };
  for (const auto& logo : logos) {
    SCOPED_TRACE(logo.what);
    ASSERT_TRUE(DecodeImage(logo.bytes).has_value()) << "whole, it decodes";
    for (const double kept : {0.25, 0.5, 0.75, 0.9}) {
      const auto cut = static_cast<std::size_t>(logo.bytes.size() * kept);
      EXPECT_FALSE(DecodeImage(logo.bytes.substr(0, cut)).has_value()) << cut << " of " << logo.bytes.size();
    }
    for (std::size_t header : {8, 16, 32})
      EXPECT_FALSE(DecodeImage(logo.bytes.substr(0, header)).has_value());
  }

  std::string flipped = sandbox::PublisherLogoPng();
  flipped[flipped.size() / 2] ^= 0x10;  // inside the pixel data: its checksum no longer matches
  for (const auto& [what, bytes] : {
           std::pair<const char*, std::string>{"PNG with a flipped bit", flipped},
           // Signature, screen, a colour table of four, and the trailer.
           {"GIF without an image", sandbox::PublisherLogoGif().substr(0, 13 + 4 * 3) + "\x3B"},
           {"empty", ""},
           {"an error page", "<html><body>404 Not Found</body></html>"},
       }) {
    EXPECT_FALSE(DecodeImage(bytes).has_value()) << what;
  }
}

}  // namespace
}  // namespace obolo
