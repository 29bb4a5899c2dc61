#include "sandbox/jwt.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <array>
#include <nlohmann/json.hpp>
#include <random>

namespace obolo::sandbox {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

int SextetOf(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '-') return 62;
  if (c == '_') return 63;
  return -1;
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
  if (it->is_number_integer()) {
    out = it->get<std::int64_t>();
    return true;
  }
  return false;
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

std::string Base64UrlEncode(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() * 4 + 2) / 3);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                 (static_cast<unsigned char>(bytes[i + 1]) << 8) | static_cast<unsigned char>(bytes[i + 2]);
    out += kAlphabet[(v >> 18) & 63];
    out += kAlphabet[(v >> 12) & 63];
    out += kAlphabet[(v >> 6) & 63];
    out += kAlphabet[v & 63];
  }
  const std::size_t rest = bytes.size() - i;
  if (rest == 1) {
    unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
    out += kAlphabet[(v >> 18) & 63];
    out += kAlphabet[(v >> 12) & 63];
  } else if (rest == 2) {
    unsigned v =
        (static_cast<unsigned char>(bytes[i]) << 16) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
    out += kAlphabet[(v >> 18) & 63];
    out += kAlphabet[(v >> 12) & 63];
    out += kAlphabet[(v >> 6) & 63];
  }
  return out;
}

std::optional<std::string> Base64UrlDecode(std::string_view text) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  std::string out;
  out.reserve(text.size() * 3 / 4);
  unsigned buffer = 0;
  int bits = 0;
  for (char c : text) {
    const int sextet = SextetOf(c);
    if (sextet < 0) return std::nullopt;
    buffer = (buffer << 6) | static_cast<unsigned>(sextet);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out += static_cast<char>((buffer >> bits) & 0xFF);
    }
  }
  return out;
}

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

std::string TokenSigner::mac(std::string_view signing_input) const {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  if (HMAC(EVP_sha256(), secret_.data(), static_cast<int>(secret_.size()),
           reinterpret_cast<const unsigned char*>(signing_input.data()), signing_input.size(), digest,
           &length) == nullptr) {
    return {};
  }
  return std::string(reinterpret_cast<const char*>(digest), length);
}

std::string TokenSigner::sign(const TokenClaims& claims) const {
  static const std::string header = Base64UrlEncode(R"({"alg":"HS256","typ":"JWT"})");
  std::string input = header + "." + Base64UrlEncode(ClaimsJson(claims).dump());
  return input + "." + Base64UrlEncode(mac(input));
}

TokenCheck TokenSigner::verify(std::string_view token, std::int64_t now, TokenClaims* claims) const {
  const auto first = token.find('.');
  if (first == std::string_view::npos) return TokenCheck::kMalformed;
  const auto second = token.find('.', first + 1);
  if (second == std::string_view::npos || token.find('.', second + 1) != std::string_view::npos) {
    return TokenCheck::kMalformed;
  }
  auto header_text = Base64UrlDecode(token.substr(0, first));
  auto payload_text = Base64UrlDecode(token.substr(first + 1, second - first - 1));
  auto signature = Base64UrlDecode(token.substr(second + 1));
  if (!header_text || !payload_text || !signature) return TokenCheck::kMalformed;

  auto header = nlohmann::json::parse(*header_text, nullptr, /*allow_exceptions=*/false);
  if (!header.is_object()) return TokenCheck::kMalformed;
  auto parsed = ParseClaims(*payload_text);
  if (!parsed) return TokenCheck::kMalformed;

  auto alg = header.find("alg");
  if (alg == header.end() || *alg != "HS256") return TokenCheck::kBadSignature;
  const std::string expected = mac(token.substr(0, second));
  if (expected.empty() || expected.size() != signature->size() ||
      CRYPTO_memcmp(expected.data(), signature->data(), expected.size()) != 0) {
    return TokenCheck::kBadSignature;
  }
  if (claims != nullptr) *claims = *parsed;
  return parsed->exp > now ? TokenCheck::kValid : TokenCheck::kExpired;
}

}  // namespace obolo::sandbox
