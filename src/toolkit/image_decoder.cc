#include "toolkit/image_decoder.h"

#include <mutex>
#include <utility>

#include "toolkit/format_decoders.h"
#include "toolkit/image_format.h"

namespace obolo {
namespace {

struct ObserverSlot {
  std::mutex mutex;
  ImageDecodeObserver observer;  // guarded by mutex
};

ObserverSlot& Observer() {
  static ObserverSlot* const slot = new ObserverSlot();  // used until exit
  return *slot;
}

std::optional<DecodedImage> DecodeByFormat(std::string_view bytes) {
  const auto format = SniffImageFormat(bytes);
  if (!format) return std::nullopt;
  switch (*format) {
    case ImageFormat::png:
      return DecodePng(bytes);
    case ImageFormat::jpeg:
      return DecodeJpeg(bytes);
    case ImageFormat::webp:
      return DecodeWebp(bytes);
    case ImageFormat::gif:
      return DecodeGif(bytes);
  }
  return std::nullopt;
}

}  // namespace

bool WithinPixelLimit(std::uint64_t width, std::uint64_t height) {
  return width > 0 && height > 0 && width <= kMaxImageSide && height <= kMaxImageSide &&
         width * height <= kMaxImagePixels;
}

DecodedImage BlankImage(std::uint32_t width, std::uint32_t height) {
  DecodedImage image;
  image.width = width;
  image.height = height;
  image.pixels.assign(std::size_t{width} * height, 0);
  return image;
}

std::optional<DecodedImage> DecodeImage(std::string_view bytes) {
  auto image = DecodeByFormat(bytes);
  ImageDecodeObserver observer;
  {
    std::lock_guard<std::mutex> lock(Observer().mutex);
    observer = Observer().observer;
  }
  if (observer) observer(image.has_value());
  return image;
}

void SetImageDecodeObserver(ImageDecodeObserver observer) {
  std::lock_guard<std::mutex> lock(Observer().mutex);
  Observer().observer = std::move(observer);
}

}  // namespace obolo
