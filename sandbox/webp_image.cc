#include <webp/encode.h>

#include "sandbox/image_encoders.h"

namespace obolo::sandbox {

std::string EncodeWebp(int width, int height, const std::vector<Rgba>& pixels, bool lossless, float quality) {
  const auto* rgba = reinterpret_cast<const std::uint8_t*>(pixels.data());
  std::uint8_t* output = nullptr;
  const std::size_t size = lossless ? WebPEncodeLosslessRGBA(rgba, width, height, width * 4, &output)
                                    : WebPEncodeRGBA(rgba, width, height, width * 4, quality, &output);
  if (size == 0) return {};
  std::string webp(reinterpret_cast<const char*>(output), size);
  WebPFree(output);
  return webp;
}

}  // namespace obolo::sandbox
