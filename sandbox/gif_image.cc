// giflib reports errors by its return values.

#include <gif_lib.h>

#include <algorithm>
#include <map>
#include <tuple>

#include "sandbox/image_encoders.h"

namespace obolo::sandbox {
namespace {

int AppendToString(GifFileType* gif, const GifByteType* data, int length) {
  static_cast<std::string*>(gif->UserData)->append(reinterpret_cast<const char*>(data), length);
  return length;
}

// Closes the file (writing its trailer) on every way out.
class GifWrite {
 public:
  explicit GifWrite(std::string& out) {
    int error = 0;
    gif_ = EGifOpen(&out, AppendToString, &error);
  }
  ~GifWrite() { close(); }
  GifWrite(const GifWrite&) = delete;
  GifWrite& operator=(const GifWrite&) = delete;

  GifFileType* get() const { return gif_; }
  bool close() {
    int error = 0;
    const bool closed = gif_ && EGifCloseFile(gif_, &error) == GIF_OK;
    gif_ = nullptr;
    return closed;
  }

 private:
  GifFileType* gif_ = nullptr;
};

}  // namespace

std::string EncodeGif(int width, int height, const std::vector<Rgba>& pixels, bool interlaced) {
  // Index 0 is the transparent colour; the image's colours follow.
  std::vector<GifColorType> colours(1, GifColorType{0, 0, 0});
  std::map<std::tuple<int, int, int>, GifPixelType> index_of;
  std::vector<GifPixelType> indices;
  indices.reserve(pixels.size());
  for (const Rgba& p : pixels) {
    if (p.a == 0) {
      indices.push_back(0);
      continue;
    }
    if (p.a != 255) return {};
    auto [it, added] = index_of.try_emplace({p.r, p.g, p.b}, static_cast<GifPixelType>(colours.size()));
    if (added) {
      if (colours.size() == 256) return {};
      colours.push_back(GifColorType{p.r, p.g, p.b});
    }
    indices.push_back(it->second);
  }
  int table_size = 2;
  while (table_size < static_cast<int>(colours.size())) table_size *= 2;
  colours.resize(table_size, GifColorType{0, 0, 0});

  std::string gif_bytes;
  GifWrite write(gif_bytes);
  GifFileType* gif = write.get();
  if (!gif) return {};
  ColorMapObject* map = GifMakeMapObject(table_size, colours.data());
  if (!map) return {};
  EGifSetGifVersion(gif, true);
  GraphicsControlBlock control{};
  control.DisposalMode = DISPOSAL_UNSPECIFIED;
  control.DelayTime = 0;
  control.TransparentColor = 0;
  GifByteType extension[4];
  const std::size_t extension_size = EGifGCBToExtension(&control, extension);
  bool ok =
      EGifPutScreenDesc(gif, width, height, 8, 0, map) == GIF_OK &&
      EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(extension_size), extension) == GIF_OK &&
      EGifPutImageDesc(gif, 0, 0, width, height, interlaced, nullptr) == GIF_OK;
  GifFreeMapObject(map);

  // Interlaced rows go out in four passes: every 8th row from 0, every 8th
  // from 4, every 4th from 2, every 2nd from 1.
  static constexpr int kPassStart[] = {0, 4, 2, 1};
  static constexpr int kPassStep[] = {8, 8, 4, 2};
  for (int pass = 0; ok && pass < (interlaced ? 4 : 1); ++pass) {
    const int step = interlaced ? kPassStep[pass] : 1;
    for (int row = interlaced ? kPassStart[pass] : 0; ok && row < height; row += step) {
      ok =
          EGifPutLine(gif, indices.data() + std::size_t{static_cast<unsigned>(row)} * width, width) == GIF_OK;
    }
  }
  if (!write.close() || !ok) return {};
  return gif_bytes;
}

}  // namespace obolo::sandbox
