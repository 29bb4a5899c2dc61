// The sandbox's tokens: what it signs verifies only at the same instance, in
// time, unaltered and under HS256; and the kit reads their expiry.

#include "sandbox/jwt.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <string>

#include "entry/jwt_decode.h"
#include "support/tokens.h"

namespace obolo::sandbox {
namespace {

using obolo::testing::Base64Url;

constexpr std::int64_t kNow = 1'700'000'000;

TokenClaims Claims(std::int64_t exp) {
  TokenClaims claims;
  claims.jti = "9b1f";
  claims.username = "reader@example.com";
  claims.tokenUse = "access";
  claims.iss = "https://api.obolo.io";
  claims.scope = "wallet";
  claims.exp = exp;
  claims.sub = "101";
  claims.eventId = "e-1";
  claims.clientId = "sandbox";
  claims.iat = exp - 3600;
  claims.authTime = exp - 7200;
  return claims;
}

// A compact token over `header` and `payload` JSON, signed with HMAC-SHA256
// under `secret`, as any HS256 signer would make it.
std::string SignedToken(const std::string& header, const std::string& payload, const std::string& secret) {
  const std::string input = Base64Url(header) + "." + Base64Url(payload);
  unsigned char mac[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
       reinterpret_cast<const unsigned char*>(input.data()), input.size(), mac, &length);
  return input + "." + Base64Url(std::string(reinterpret_cast<const char*>(mac), length));
}

std::string Segment(const std::string& token, int index) {
  std::size_t start = 0;
  for (int i = 0; i < index; ++i) start = token.find('.', start) + 1;
  return token.substr(start, token.find('.', start) - start);
}

TEST(TokenSignerTest, ATokenRoundTripsItsClaimsAndTheKitReadsItsExpiry) {
  const TokenSigner signer;
  const TokenClaims issued = Claims(kNow + 3600);
  const std::string token = signer.sign(issued);

  TokenClaims read;
  ASSERT_EQ(signer.verify(token, kNow, &read), TokenCheck::kValid);
  EXPECT_EQ(read.jti, issued.jti);
  EXPECT_EQ(read.username, issued.username);
  EXPECT_EQ(read.tokenUse, issued.tokenUse);
  EXPECT_EQ(read.iss, issued.iss);
  EXPECT_EQ(read.scope, issued.scope);
  EXPECT_EQ(read.exp, issued.exp);
  EXPECT_EQ(read.sub, issued.sub);
  EXPECT_EQ(read.eventId, issued.eventId);
  EXPECT_EQ(read.clientId, issued.clientId);
  EXPECT_EQ(read.iat, issued.iat);
  EXPECT_EQ(read.authTime, issued.authTime);

  const TokenData kit = JWTDecode::shared().decode(token);
  EXPECT_EQ(kit.exp, issued.exp);
  EXPECT_EQ(kit.token_use, "access");
  EXPECT_EQ(kit.auth_time, issued.authTime);
}

TEST(TokenSignerTest, OnlyAnUnalteredUnexpiredHs256TokenOfThisInstanceIsValid) {
  const std::string secret = "a secret of this sandbox instance";
  const TokenSigner signer(secret);
  const std::string token = signer.sign(Claims(kNow + 60));
  const std::string other = TokenSigner().sign(Claims(kNow + 60));
  const std::string richer = signer.sign(Claims(kNow + 999999));
  const std::string payload = R"({"jti":"9b1f","token_use":"access","exp":1700000060})";
  struct Case {
    const char* what;
    std::string token;
    TokenCheck expected;
  } cases[] = {
      {"as issued", token, TokenCheck::kValid},
      {"made by any HS256 signer with the same secret",
       SignedToken(R"({"alg":"HS256","typ":"JWT"})", payload, secret), TokenCheck::kValid},
      {"expired", signer.sign(Claims(kNow)), TokenCheck::kExpired},
      {"from another instance", other, TokenCheck::kBadSignature},
      {"another payload under this signature",
       Segment(token, 0) + "." + Segment(richer, 1) + "." + Segment(token, 2), TokenCheck::kBadSignature},
      {"unsigned", Base64Url(R"({"alg":"none","typ":"JWT"})") + "." + Base64Url(payload) + ".",
       TokenCheck::kBadSignature},
      {"HS512 under the same secret", SignedToken(R"({"alg":"HS512","typ":"JWT"})", payload, secret),
       TokenCheck::kBadSignature},
      {"signature cut short", token.substr(0, token.size() - 4), TokenCheck::kBadSignature},
      {"expiry as a text", SignedToken(R"({"alg":"HS256","typ":"JWT"})", R"({"exp":"1700000060"})", secret),
       TokenCheck::kMalformed},
      {"payload not JSON", SignedToken(R"({"alg":"HS256","typ":"JWT"})", "exp=1700000060", secret),
       TokenCheck::kMalformed},
      {"two segments", Segment(token, 0) + "." + Segment(token, 1), TokenCheck::kMalformed},
      {"four segments", token + ".x", TokenCheck::kMalformed},
      {"empty", "", TokenCheck::kMalformed},
      {"not base64url", "%%%.%%%.%%%", TokenCheck::kMalformed},
  };
  for (const Case& c : cases) {
    TokenClaims claims;
    EXPECT_EQ(signer.verify(c.token, kNow, &claims), c.expected) << c.what;
    if (c.expected != TokenCheck::kValid && c.expected != TokenCheck::kExpired) {
      EXPECT_EQ(claims.jti, "") << c.what << ": claims of a token that did not verify";
    }
  }
}

}  // namespace
}  // namespace obolo::sandbox
