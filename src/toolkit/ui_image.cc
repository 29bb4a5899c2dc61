#include "toolkit/ui_image.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>

#include "toolkit/image_decoder.h"

namespace obolo {
namespace {

// Named images already loaded, by bundle and name: every paywall asks for the
// same few images, and decoding the card's banner takes longer than the rest
// of showing the card.
struct NamedImageCache {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<const UIImage>, std::less<>> images;  // guarded by mutex
};

NamedImageCache& Cache() {
  static NamedImageCache* const cache = new NamedImageCache();  // used until exit
  return *cache;
}

}  // namespace

std::shared_ptr<const UIImage> UIImage::decode(std::string name, std::string data) {
  const auto format = SniffImageFormat(data);
  if (!format) return nullptr;
  auto pixels = DecodeImage(data);
  if (!pixels) return nullptr;
  return std::make_shared<const UIImage>(
      Key(), std::move(name), std::make_shared<const std::string>(std::move(data)), *format,
      std::make_shared<const DecodedImage>(std::move(*pixels)), UIImageRenderingMode::automatic);
}

std::shared_ptr<const UIImage> UIImage::named(std::string_view name, const std::optional<Bundle>& bundle) {
  const Bundle source = bundle ? *bundle : Bundle::main();
  // Looked up before the file system is asked: a loaded image is kept even
  // if its file goes, as a bundle's files do not change while it is in use.
  std::string key = source.bundlePath().string();
  key.append("/").append(name);
  NamedImageCache& cache = Cache();
  {
    std::lock_guard<std::mutex> lock(cache.mutex);
    if (auto it = cache.images.find(key); it != cache.images.end()) return it->second;
  }
  auto path = source.pathForResource(name, "png");
  if (!path) return nullptr;
  std::ifstream file(*path, std::ios::binary);
  if (!file) return nullptr;
  std::string data((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  auto image = decode(std::string(name), std::move(data));
  if (!image) return nullptr;
  std::lock_guard<std::mutex> lock(cache.mutex);
  return cache.images.try_emplace(key, std::move(image)).first->second;
}

std::shared_ptr<const UIImage> UIImage::fromData(std::string data) {
  return decode(std::string(), std::move(data));
}

std::shared_ptr<const UIImage> UIImage::withRenderingMode(UIImageRenderingMode mode) const {
  return std::make_shared<const UIImage>(Key(), name_, data_, format_, pixels_, mode);
}

}  // namespace obolo
