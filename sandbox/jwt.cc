#include "sandbox/jwt.h"

#include <jwt.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>

namespace obolo::sandbox {
namespace {

struct JwtDeleter {
  void operator()(jwt_t* token) const { jwt_free(token); }
};
using JwtHolder = std::unique_ptr<jwt_t, JwtDeleter>;

struct FreeDeleter {
  void operator()(char* text) const { std::free(text); }
};
using MallocText = std::unique_ptr<char, FreeDeleter>;

const unsigned char* KeyBytes(const std::string& secret) {
  return reinterpret_cast<const unsigned char*>(secret.data());
}

// The claims as a JSON object, integers as JSON integers.
nlohmann::ordered_json ClaimsJson(const TokenClaims& claims) {
  return {{"jti", claims.jti}, {"username", claims.username}, {"token_use", claims.tokenUse},
          {"iss", claims.iss}, {"scope", claims.scope},       {"exp", claims.exp},
          {"sub", claims.sub}, {"event_id", claims.eventId},  {"client_id", claims.clientId},
          {"iat", claims.iat}, {"auth_time", claims.authTime}};
}

bool ReadText(const nlohmann::json& payload, const char* key, std::string& out) {
  auto it = payload.find(key);
  if (it == payload.end()) return true;
  if (!it->is_string()) return false;
  out = it->get<std::string>();
  return true;
}

bool ReadInteger(const nlohmann::json& payload, const char* key, std::int64_t& out) {
  auto it = payload.find(key);
  if (it == payload.end()) return true;
  if (!it->is_number_integer()) return false;
  out = it->get<std::int64_t>();
  return true;
}

std::optional<TokenClaims> ParseClaims(std::string_view payload_text) {
  auto payload = nlohmann::json::parse(payload_text, nullptr, /*allow_exceptions=*/false);
  if (!payload.is_object()) return std::nullopt;
  TokenClaims claims;
  bool ok = ReadText(payload, "jti", claims.jti) && ReadText(payload, "username", claims.username) &&
            ReadText(payload, "token_use", claims.tokenUse) && ReadText(payload, "iss", claims.iss) &&
            ReadText(payload, "scope", claims.scope) && ReadInteger(payload, "exp", claims.exp) &&
            ReadText(payload, "sub", claims.sub) && ReadText(payload, "event_id", claims.eventId) &&
            ReadText(payload, "client_id", claims.clientId) && ReadInteger(payload, "iat", claims.iat) &&
            ReadInteger(payload, "auth_time", claims.authTime);
  if (!ok) return std::nullopt;
  return claims;
}

}  // namespace

TokenSigner::TokenSigner() {
  std::array<unsigned char, 32> random{};
  if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1) {
    // Without OpenSSL's generator the instance still needs a secret of its own.
    std::random_device device;
    for (auto& byte : random) byte = static_cast<unsigned char>(device());
  }
  secret_.assign(reinterpret_cast<const char*>(random.data()), random.size());
}

TokenSigner::TokenSigner(std::string secret) : secret_(std::move(secret)) {}

std::string TokenSigner::sign(const TokenClaims& claims) const {
  jwt_t* raw = nullptr;
  if (jwt_new(&raw) != 0) return {};
  JwtHolder token(raw);
  const std::string payload = ClaimsJson(claims).dump();
  if (jwt_add_grants_json(token.get(), payload.c_str()) != 0 ||
      jwt_set_alg(token.get(), JWT_ALG_HS256, KeyBytes(secret_), static_cast<int>(secret_.size())) != 0) {
    return {};
  }
  MallocText encoded(jwt_encode_str(token.get()));
  return encoded ? std::string(encoded.get()) : std::string();
}

TokenCheck TokenSigner::verify(std::string_view token, std::int64_t now, TokenClaims* claims) const {
  if (std::count(token.begin(), token.end(), '.') != 2) return TokenCheck::kMalformed;
  const std::string text(token);
  jwt_t* raw = nullptr;
  if (jwt_decode(&raw, text.c_str(), KeyBytes(secret_), static_cast<int>(secret_.size())) != 0) {
    // Tell a token that is well formed but signed otherwise (or unsigned) from
    // text that is no token: libjwt reads the former without a key.
    jwt_t* unverified = nullptr;
    const bool well_formed = jwt_decode(&unverified, text.c_str(), nullptr, 0) == 0;
    JwtHolder release(unverified);
    return well_formed ? TokenCheck::kBadSignature : TokenCheck::kMalformed;
  }
  JwtHolder decoded(raw);
  // libjwt verified the signature under the algorithm the header names; only
  // the one the sandbox signs with counts.
  if (jwt_get_alg(decoded.get()) != JWT_ALG_HS256) return TokenCheck::kBadSignature;
  MallocText payload(jwt_get_grants_json(decoded.get(), nullptr));
  auto parsed = payload ? ParseClaims(payload.get()) : std::nullopt;
  if (!parsed) return TokenCheck::kMalformed;
  if (claims != nullptr) *claims = *parsed;
  return parsed->exp > now ? TokenCheck::kValid : TokenCheck::kExpired;
}

}  // namespace obolo::sandbox
