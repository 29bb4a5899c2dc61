// A stored token is whatever the store holds: decoding it never fails loudly.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "entry/jwt_decode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const obolo::TokenData token = obolo::JWTDecode::shared().decode(text);
  (void)obolo::dateFromMilliseconds(token.exp.value_or(0)).description();
  (void)obolo::JWTDecode::shared().decodeJWTPart(text);
  return 0;
}
