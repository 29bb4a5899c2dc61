#include "toolkit/ui_image.h"

#include <fstream>
#include <iterator>
#include <utility>

namespace obolo {

std::shared_ptr<const UIImage> UIImage::named(std::string_view name, const std::optional<Bundle>& bundle) {
  const Bundle source = bundle ? *bundle : Bundle::main();
  auto path = source.pathForResource(name, "png");
  if (!path) return nullptr;
  std::ifstream file(*path, std::ios::binary);
  if (!file) return nullptr;
  std::string data((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  auto info = InspectImageData(data);
  if (!info) return nullptr;
  return std::make_shared<const UIImage>(std::string(name), std::move(data), *info,
                                         UIImageRenderingMode::automatic);
}

std::shared_ptr<const UIImage> UIImage::fromData(std::string data) {
  auto info = InspectImageData(data);
  if (!info) return nullptr;
  return std::make_shared<const UIImage>(std::string(), std::move(data), *info,
                                         UIImageRenderingMode::automatic);
}

std::shared_ptr<const UIImage> UIImage::withRenderingMode(UIImageRenderingMode mode) const {
  return std::make_shared<const UIImage>(name_, data_, info_, mode);
}

}  // namespace obolo
