// Reading the payload of the service's JSON Web Tokens.
//
// The kit only reads a token's payload, to learn when it expires. It never
// checks the signature, header, issuer or any other claim: the service stays
// the authority on whether it accepts a token.

#ifndef OBOLO_ENTRY_JWT_DECODE_H_
#define OBOLO_ENTRY_JWT_DECODE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"
#include "platform/json_record.h"

namespace obolo {

// A token's decoded payload. Every claim is optional; only `exp` (seconds since
// 1970) is consulted by the kit.
struct TokenData {
  static constexpr std::string_view kName = "TokenData";

  std::optional<std::string> jti{};
  std::optional<std::string> username{};
  std::optional<std::string> token_use{};
  std::optional<std::string> iss{};
  std::optional<std::string> scope{};
  std::optional<std::int64_t> exp{};
  std::optional<std::string> sub{};
  std::optional<std::string> event_id{};
  std::optional<std::string> client_id{};
  std::optional<std::int64_t> iat{};
  std::optional<std::int64_t> auth_time{};

  template <class Self, class Visit>
  static void fields(Self& self, Visit&& visit) {
    visit("jti", self.jti);
    visit("username", self.username);
    visit("token_use", self.token_use);
    visit("iss", self.iss);
    visit("scope", self.scope);
    visit("exp", self.exp);
    visit("sub", self.sub);
    visit("event_id", self.event_id);
    visit("client_id", self.client_id);
    visit("iat", self.iat);
    visit("auth_time", self.auth_time);
  }

  friend bool operator==(const TokenData&, const TokenData&) = default;
};

// Stateless; one shared instance for the process.
class JWTDecode {
 public:
  static JWTDecode& shared();

  // The payload (second segment) of a compact token "header.payload.signature".
  // Any failure gives the empty record, which callers treat as expired; so does
  // a token with fewer than two segments, which has no payload to read.
  TokenData decode(std::string_view jwtToken) const;

  // One base64url segment decoded as a TokenData; the empty record when the
  // segment does not decode, is not JSON, or holds a claim of the wrong type.
  TokenData decodeJWTPart(std::string_view segment) const;

 private:
  JWTDecode() = default;

  // base64url to bytes. The text is padded with "=" up to a multiple of four
  // characters (counting every byte of it), then decoded as standard base64,
  // skipping characters outside the alphabet. A length that leaves a remainder
  // of 1 therefore gets "===" and does not decode.
  std::optional<std::string> base64UrlDecode(std::string_view segment) const;
};

// The integer read as a count of seconds since 1970-01-01 00:00:00 UTC. There
// is no division by 1000: the service's `exp` is in seconds, whatever the name
// suggests.
Date dateFromMilliseconds(std::int64_t value);

}  // namespace obolo

#endif  // OBOLO_ENTRY_JWT_DECODE_H_
