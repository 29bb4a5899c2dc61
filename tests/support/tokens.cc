#include "support/tokens.h"

#include <chrono>

namespace obolo::testing {

std::string Base64Url(std::string_view bytes) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string out;
  size_t i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    const auto n = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 16 |
                   static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8 |
                   static_cast<unsigned char>(bytes[i + 2]);
    out += kAlphabet[n >> 18 & 63];
    out += kAlphabet[n >> 12 & 63];
    out += kAlphabet[n >> 6 & 63];
    out += kAlphabet[n & 63];
  }
  const size_t rest = bytes.size() - i;
  if (rest > 0) {
    std::uint32_t n = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
    if (rest == 2) n |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
    out += kAlphabet[n >> 18 & 63];
    out += kAlphabet[n >> 12 & 63];
    if (rest == 2) out += kAlphabet[n >> 6 & 63];
  }
  return out;
}

std::string MakeToken(std::string_view payloadJson) {
  return Base64Url(R"({"alg":"HS256","typ":"JWT"})") + "." + Base64Url(payloadJson) + "." +
         Base64Url("not-a-real-signature");
}

std::string MakeTokenWithClaims(const nlohmann::json& payload) { return MakeToken(payload.dump()); }

std::string TokenExpiringAt(std::int64_t exp) {
  return MakeTokenWithClaims(nlohmann::json{{"jti", "3f1c"},
                                  {"username", "reader@example.com"},
                                  {"token_use", "access"},
                                  {"iss", "https://api.obolo.io"},
                                  {"exp", exp},
                                  {"sub", "42"},
                                  {"iat", exp - 3600},
                                  {"auth_time", exp - 3600}});
}

std::int64_t NowSeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace obolo::testing
