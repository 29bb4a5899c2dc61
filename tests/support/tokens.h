// Real compact JSON Web Tokens for tests: header.payload.signature, base64url
// without padding.

#ifndef OBOLO_TESTS_SUPPORT_TOKENS_H_
#define OBOLO_TESTS_SUPPORT_TOKENS_H_

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace obolo::testing {

std::string Base64Url(std::string_view bytes);

// A token whose payload is `payload` as compact JSON text.
std::string MakeToken(std::string_view payloadJson);
std::string MakeTokenWithClaims(const nlohmann::json& payload);

// A token expiring at `exp` (seconds since 1970), with the other usual claims.
std::string TokenExpiringAt(std::int64_t exp);

// Seconds since 1970, now, by the system clock.
std::int64_t NowSeconds();

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_TOKENS_H_
