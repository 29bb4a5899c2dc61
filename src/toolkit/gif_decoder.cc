// GIF through giflib, which reports failure by its return values. Only the
// first frame is read, record by record, so a long animation costs no more
// than its first picture; DGifSlurp, which would read every frame, is not
// used.

#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "toolkit/argb_pixels.h"
#include "toolkit/format_decoders.h"

namespace obolo {
namespace {

struct MemoryInput {
  const GifByteType* data;
  std::size_t size;
  std::size_t position = 0;
};

int ReadFromMemory(GifFileType* gif, GifByteType* buffer, int length) {
  auto* input = static_cast<MemoryInput*>(gif->UserData);
  const std::size_t count = std::min<std::size_t>(length < 0 ? 0 : length, input->size - input->position);
  std::memcpy(buffer, input->data + input->position, count);
  input->position += count;
  return static_cast<int>(count);
}

// Closes the file giflib opened, on every way out.
class GifRead {
 public:
  explicit GifRead(MemoryInput& input) {
    int error = 0;
    gif_ = DGifOpen(&input, ReadFromMemory, &error);
  }
  ~GifRead() {
    int error = 0;
    if (gif_) DGifCloseFile(gif_, &error);
  }
  GifRead(const GifRead&) = delete;
  GifRead& operator=(const GifRead&) = delete;

  GifFileType* get() const { return gif_; }

 private:
  GifFileType* gif_ = nullptr;
};

// The transparent colour index of a graphic control extension, or -1.
bool ReadExtension(GifFileType* gif, int& transparent) {
  int code = 0;
  GifByteType* block = nullptr;
  if (DGifGetExtension(gif, &code, &block) != GIF_OK) return false;
  if (code == GRAPHICS_EXT_FUNC_CODE && block && block[0] >= 4) {
    GraphicsControlBlock control{};
    if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) transparent = control.TransparentColor;
  }
  while (block) {
    if (DGifGetExtensionNext(gif, &block) != GIF_OK) return false;
  }
  return true;
}

// Draws the frame just described (gif->Image) on `canvas`: pixels outside the
// logical screen are dropped, and transparent pixels (and indices outside
// the colour table) leave the canvas as it is.
bool DrawFrame(GifFileType* gif, int transparent, DecodedImage& canvas) {
  const GifImageDesc& frame = gif->Image;
  const ColorMapObject* colours = frame.ColorMap ? frame.ColorMap : gif->SColorMap;
  if (!colours || !colours->Colors) return false;
  if (frame.Left < 0 || frame.Top < 0 || !WithinPixelLimit(frame.Width, frame.Height)) return false;

  std::vector<std::uint32_t> palette(256, 0);
  for (int i = 0; i < std::min(colours->ColorCount, 256); ++i) {
    const GifColorType& c = colours->Colors[i];
    if (i != transparent) palette[i] = PremultipliedArgb(c.Red, c.Green, c.Blue, 255);
  }

  // Interlaced rows arrive in four passes: every 8th row from 0, every 8th
  // from 4, every 4th from 2, every 2nd from 1.
  static constexpr int kPassStart[] = {0, 4, 2, 1};
  static constexpr int kPassStep[] = {8, 8, 4, 2};
  const int passes = frame.Interlace ? 4 : 1;
  std::vector<GifPixelType> line(frame.Width);
  for (int pass = 0; pass < passes; ++pass) {
    const int start = frame.Interlace ? kPassStart[pass] : 0;
    const int step = frame.Interlace ? kPassStep[pass] : 1;
    for (int row = start; row < frame.Height; row += step) {
      if (DGifGetLine(gif, line.data(), frame.Width) != GIF_OK) return false;
      const std::uint64_t y = std::uint64_t{static_cast<std::uint32_t>(frame.Top)} + row;
      if (y >= canvas.height) continue;
      std::uint32_t* out = canvas.pixels.data() + y * canvas.width;
      for (int column = 0; column < frame.Width; ++column) {
        const std::uint64_t x = std::uint64_t{static_cast<std::uint32_t>(frame.Left)} + column;
        if (x >= canvas.width) break;
        if (const std::uint32_t colour = palette[line[column]]) out[x] = colour;
      }
    }
  }
  return true;
}

}  // namespace

std::optional<DecodedImage> DecodeGif(std::string_view bytes) {
  MemoryInput input{reinterpret_cast<const GifByteType*>(bytes.data()), bytes.size()};
  GifRead read(input);  // reads the signature, the screen and the global colour table
  GifFileType* gif = read.get();
  if (!gif || !WithinPixelLimit(gif->SWidth, gif->SHeight)) return std::nullopt;

  int transparent = -1;
  for (;;) {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(gif, &record) != GIF_OK) return std::nullopt;
    switch (record) {
      case EXTENSION_RECORD_TYPE:
        if (!ReadExtension(gif, transparent)) return std::nullopt;
        break;
      case IMAGE_DESC_RECORD_TYPE: {
        if (DGifGetImageDesc(gif) != GIF_OK) return std::nullopt;
        DecodedImage canvas = BlankImage(gif->SWidth, gif->SHeight);
        if (!DrawFrame(gif, transparent, canvas)) return std::nullopt;
        return canvas;
      }
      default:  // the trailer before any image, or a record giflib does not know
        return std::nullopt;
    }
  }
}

}  // namespace obolo
