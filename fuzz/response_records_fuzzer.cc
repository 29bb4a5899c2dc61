// Any bytes from the network decode into an envelope or fail with a sentence,
// the same whether decoded from a copy or in place (which must leave the text
// as it was); what decodes survives an encode/decode round trip unchanged.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "network/response_records.h"

namespace {

template <class Envelope>
void Check(std::string_view bytes) {
  auto decoded = Envelope::decode(bytes);
  std::string owned(bytes);
  const auto in_place = obolo::DecodeRecordInPlace<Envelope>(owned);
  if (owned != bytes || in_place.ok() != decoded.ok() || in_place.error() != decoded.error()) std::abort();
  if (!decoded) {
    if (decoded.error().empty()) std::abort();  // a failure always says why
    return;
  }
  const std::string encoded = decoded.value().encode();
  auto again = Envelope::decode(encoded);
  if (!again || again.value().encode() != encoded) std::abort();
  (void)decoded.value().description();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Check<obolo::OboloData>(bytes);
  Check<obolo::NextTokenData>(bytes);
  Check<obolo::BalanceAndArticleData>(bytes);
  Check<obolo::LogoutData>(bytes);
  return 0;
}
