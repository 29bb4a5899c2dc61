// A host passes whatever text it likes as a colour: parsing it never fails,
// and every component lands between 0 and 1.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "ui/hex_color.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const obolo::ColorComponents color = obolo::HexColorComponents(text);
  for (double component : {color.red, color.green, color.blue, color.alpha}) {
    if (!(component >= 0.0 && component <= 1.0)) std::abort();
  }
  (void)obolo::hexStringToUIColor(text);
  return 0;
}
