// An image: encoded bytes known to decode, their pixel size, and how the
// image is drawn.
//
// Images are immutable and shared (std::shared_ptr<const UIImage>); a copy
// with another rendering mode is a new image with the same bytes. A scale of
// 1 is assumed: the size in points is the size in pixels.

#ifndef OBOLO_TOOLKIT_UI_IMAGE_H_
#define OBOLO_TOOLKIT_UI_IMAGE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/bundle.h"
#include "toolkit/geometry.h"
#include "toolkit/image_data.h"

namespace obolo {

enum class UIImageRenderingMode { automatic = 0, alwaysOriginal = 1, alwaysTemplate = 2 };

class UIImage {
 public:
  // The image `<bundle>/<name>.png` (the main bundle's when `bundle` is
  // absent); null when the file is missing or is not a valid image. As on the
  // platform, an image loaded by name is kept for the rest of the process and
  // the same image is returned for that file from then on: bundle files do
  // not change while the app runs. Callable from any thread.
  static std::shared_ptr<const UIImage> named(std::string_view name,
                                              const std::optional<Bundle>& bundle = std::nullopt);
  // An image from encoded bytes (PNG, JPEG or GIF); null unless the bytes
  // really are one (see image_data.h for how far each format is checked).
  static std::shared_ptr<const UIImage> fromData(std::string data);

  // The resource name for named images; empty for images from data.
  const std::string& name() const { return name_; }
  const std::string& data() const { return data_; }
  ImageFormat format() const { return info_.format; }
  CGSize size() const {
    return CGSize{static_cast<CGFloat>(info_.width), static_cast<CGFloat>(info_.height)};
  }
  UIImageRenderingMode renderingMode() const { return rendering_mode_; }

  // A copy drawn in the given mode (template images are drawn in the tint).
  std::shared_ptr<const UIImage> withRenderingMode(UIImageRenderingMode mode) const;

  // Made through named() and fromData(); public for std::make_shared.
  UIImage(std::string name, std::string data, ImageInfo info, UIImageRenderingMode mode)
      : name_(std::move(name)), data_(std::move(data)), info_(info), rendering_mode_(mode) {}

 private:
  std::string name_;
  std::string data_;
  ImageInfo info_;
  UIImageRenderingMode rendering_mode_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_IMAGE_H_
