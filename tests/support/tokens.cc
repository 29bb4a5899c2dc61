#include "support/tokens.h"

#include <openssl/evp.h>

#include <algorithm>
#include <chrono>

namespace obolo::testing {

std::string Base64Url(std::string_view bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  const int length =
      EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  while (text.ends_with('=')) text.pop_back();
  std::replace(text.begin(), text.end(), '+', '-');
  std::replace(text.begin(), text.end(), '/', '_');
  return text;
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
