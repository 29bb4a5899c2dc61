// An image: its encoded bytes, its decoded pixels, and how it is drawn.
//
// Every UIImage that exists has been decoded: named() and fromData() decode
// the bytes (image_decoder.h) and return null when they are not a whole image
// within the pixel limit, so whoever draws an image never decodes and never
// fails. Images are immutable and shared (std::shared_ptr<const UIImage>); a
// copy with another rendering mode shares the bytes and the pixels. A scale
// of 1 is assumed: the size in points is the size in pixels.

#ifndef OBOLO_TOOLKIT_UI_IMAGE_H_
#define OBOLO_TOOLKIT_UI_IMAGE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/bundle.h"
#include "toolkit/decoded_image.h"
#include "toolkit/geometry.h"
#include "toolkit/image_format.h"

namespace obolo {

// How the image is drawn: as the context decides, in its own colours, or as a
// template tinted with the view's tint colour.
enum class UIImageRenderingMode { automatic = 0, alwaysOriginal = 1, alwaysTemplate = 2 };

class UIImage {
  struct Key {
    explicit Key() = default;
  };

 public:
  // The image `<bundle>/<name>.png` (the main bundle's when `bundle` is
  // absent); null when the file is missing or does not decode. As on the
  // platform, an image loaded by name is kept for the rest of the process and
  // the same image is returned for that file from then on: bundle files do
  // not change while the app runs. The first request for a file reads and
  // decodes it on the calling thread (the kit's bundle images are small, a
  // few milliseconds at most, and each is decoded once); callable from any
  // thread.
  static std::shared_ptr<const UIImage> named(std::string_view name,
                                              const std::optional<Bundle>& bundle = std::nullopt);
  // An image from encoded bytes (PNG, JPEG, WebP or GIF), decoded on the
  // calling thread; null unless the bytes decode (see image_decoder.h). Bytes
  // from the network are decoded off the main loop.
  static std::shared_ptr<const UIImage> fromData(std::string data);

  // The resource name for named images; empty for images from data.
  const std::string& name() const { return name_; }
  const std::string& data() const { return *data_; }
  ImageFormat format() const { return format_; }
  // The decoded pixels, premultiplied ARGB (decoded_image.h); never empty.
  const DecodedImage& pixels() const { return *pixels_; }
  CGSize size() const {
    return CGSize{static_cast<CGFloat>(pixels_->width), static_cast<CGFloat>(pixels_->height)};
  }
  UIImageRenderingMode renderingMode() const { return rendering_mode_; }

  // A copy drawn in the given mode (template images are drawn in the tint).
  std::shared_ptr<const UIImage> withRenderingMode(UIImageRenderingMode mode) const;

  // Made only through named(), fromData() and withRenderingMode() (Key is
  // private); public for std::make_shared.
  UIImage(Key, std::string name, std::shared_ptr<const std::string> data, ImageFormat format,
          std::shared_ptr<const DecodedImage> pixels, UIImageRenderingMode mode)
      : name_(std::move(name)),
        data_(std::move(data)),
        format_(format),
        pixels_(std::move(pixels)),
        rendering_mode_(mode) {}

 private:
  static std::shared_ptr<const UIImage> decode(std::string name, std::string data);

  std::string name_;
  std::shared_ptr<const std::string> data_;
  ImageFormat format_;
  std::shared_ptr<const DecodedImage> pixels_;
  UIImageRenderingMode rendering_mode_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_IMAGE_H_
