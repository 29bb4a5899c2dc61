// Any bytes from the network decode into an envelope or fail with a sentence,
// the same whether decoded from a copy or in place (which must leave the text
// as it was); what decodes survives an encode/decode round trip unchanged.
//
// Inputs that start with the byte 0xFF reach the decoder's length limit
// without being that long themselves: the bytes after the second are repeated
// to a text of 1 MiB - 128 + (second byte) bytes, on either side of the limit.
// Repeated '[', '{"a":' or '{},' make the deep and wide answers a hostile
// server would send.

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

std::string Repeated(std::string_view piece, std::size_t length) {
  std::string text;
  text.reserve(length + piece.size());
  while (text.size() < length) text.append(piece);
  text.resize(length);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (size >= 3 && data[0] == 0xFF) {
    // One envelope (the one with an array of records) is enough here: each
    // long input costs as much as hundreds of short ones.
    Check<obolo::BalanceAndArticleData>(Repeated(bytes.substr(2), obolo::kMaxJsonBytes - 128 + data[1]));
    return 0;
  }
  Check<obolo::OboloData>(bytes);
  Check<obolo::NextTokenData>(bytes);
  Check<obolo::BalanceAndArticleData>(bytes);
  Check<obolo::LogoutData>(bytes);
  return 0;
}
