// JSON Web Tokens as the sandbox issues them: compact form
// base64url(header).base64url(payload).base64url(signature), unpadded, signed
// with HMAC-SHA256 (HS256) under a secret that belongs to one sandbox
// instance, so a token from one instance never verifies at another. libjwt
// encodes, signs and verifies; the claims are read from its payload JSON.

#ifndef OBOLO_SANDBOX_JWT_H_
#define OBOLO_SANDBOX_JWT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace obolo::sandbox {

// The payload's claims. Texts and integers as the kit decodes them; times are
// seconds since 1970-01-01 UTC.
struct TokenClaims {
  std::string jti;
  std::string username;
  std::string tokenUse;  // "access", "refresh" or "id"; JSON key token_use
  std::string iss;
  std::string scope;
  std::int64_t exp = 0;
  std::string sub;
  std::string eventId;   // JSON key event_id
  std::string clientId;  // JSON key client_id
  std::int64_t iat = 0;
  std::int64_t authTime = 0;  // JSON key auth_time
};

enum class TokenCheck {
  kValid,
  kMalformed,     // not three base64url segments of a JSON header and payload
                  // with the claims' types
  kBadSignature,  // another key or algorithm signed it (or none), or it was altered
  kExpired,       // `exp` is not after the time of the check
};

// Signs and checks tokens. Immutable after construction, so one signer may be
// used from any number of threads.
class TokenSigner {
 public:
  // A signer with a fresh random 256-bit secret.
  TokenSigner();
  explicit TokenSigner(std::string secret);

  std::string sign(const TokenClaims& claims) const;

  // Checks the token at time `now` (seconds since 1970). `claims`, when given,
  // receives the payload whenever the signature holds, expired or not.
  TokenCheck verify(std::string_view token, std::int64_t now, TokenClaims* claims = nullptr) const;

 private:
  std::string secret_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_JWT_H_
