// The tokens the sandbox issues are real JSON Web Tokens that the kit can read:
// unpadded base64url segments, an HS256 header and typed claims.

#include "sandbox/jwt.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>

#include "sandbox_fixture.h"

namespace obolo::sandbox::testing {
namespace {

// Decodes one base64url segment with OpenSSL's plain base64 decoder, so the
// check does not lean on the sandbox's own decoder.
json DecodeSegment(std::string segment) {
  for (char& c : segment) c = c == '-' ? '+' : c == '_' ? '/' : c;
  const std::size_t padding = (4 - segment.size() % 4) % 4;
  segment.append(padding, '=');
  std::string bytes(segment.size(), '\0');
  const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                     reinterpret_cast<const unsigned char*>(segment.data()),
                                     static_cast<int>(segment.size()));
  if (length < 0) return json();
  bytes.resize(static_cast<std::size_t>(length) - padding);
  return json::parse(bytes, nullptr, false);
}

std::vector<std::string> Segments(const std::string& token) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t dot; (dot = token.find('.', start)) != std::string::npos; start = dot + 1) {
    parts.push_back(token.substr(start, dot - start));
  }
  parts.push_back(token.substr(start));
  return parts;
}

using IssuedTokenTest = SandboxTest;

TEST_F(IssuedTokenTest, LoginTokensCarryEveryClaimWithItsJsonTypeAndTheSetLifetimes) {
  sandbox_.setTokenLifetimes(std::chrono::seconds(120), std::chrono::seconds(7200));
  const std::int64_t bid_id = loggedOutBid(seed::kNormalArticleUrl)["oboloBidId"];
  json info = logIn(seed::kReaderEmail, bid_id);

  struct Case {
    const char* member;
    const char* use;
    std::int64_t lifetime;
  };
  for (const Case& c : {Case{"accessToken", "access", 120}, Case{"refreshToken", "refresh", 7200}}) {
    SCOPED_TRACE(c.member);
    ASSERT_TRUE(info[c.member].is_string());
    const std::string token = info[c.member];
    auto parts = Segments(token);
    ASSERT_EQ(parts.size(), 3u);
    for (const std::string& part : parts) {
      EXPECT_FALSE(part.empty());
      EXPECT_EQ(part.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
                std::string::npos)
          << part;
    }

    json header = DecodeSegment(parts[0]);
    EXPECT_EQ(header["alg"], "HS256");
    EXPECT_EQ(header["typ"], "JWT");

    json claims = DecodeSegment(parts[1]);
    ASSERT_TRUE(claims.is_object()) << parts[1];
    for (const char* text :
         {"jti", "username", "token_use", "iss", "scope", "sub", "event_id", "client_id"}) {
      EXPECT_TRUE(claims[text].is_string()) << text;
    }
    for (const char* integer : {"exp", "iat", "auth_time"}) {
      EXPECT_TRUE(claims[integer].is_number_integer()) << integer;
    }
    EXPECT_EQ(claims["token_use"], c.use);
    EXPECT_EQ(claims["username"], seed::kReaderEmail);
    EXPECT_EQ(claims["sub"], std::to_string(seed::kReaderId));
    EXPECT_EQ(claims["iss"], sandbox_.baseUrl());
    EXPECT_EQ(claims["exp"].get<std::int64_t>() - claims["iat"].get<std::int64_t>(), c.lifetime);
    const std::int64_t now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    EXPECT_LE(std::abs(claims["iat"].get<std::int64_t>() - now), 60);
  }
  EXPECT_NE(DecodeSegment(Segments(info["accessToken"])[1])["jti"],
            DecodeSegment(Segments(info["refreshToken"])[1])["jti"]);
}

TEST(Base64UrlTest, EncodesWithoutPaddingAndDecodesOnlyBase64Url) {
  struct Case {
    std::string bytes;
    std::string text;
  };
  const Case cases[] = {{"", ""},
                        {"f", "Zg"},
                        {"fo", "Zm8"},
                        {"foo", "Zm9v"},
                        {"foob", "Zm9vYg"},
                        {"\xfb\xff", "-_8"},
                        {std::string("\x00\x01\x02", 3), "AAEC"}};
  for (const Case& c : cases) {
    EXPECT_EQ(Base64UrlEncode(c.bytes), c.text);
    EXPECT_EQ(Base64UrlDecode(c.text), c.bytes) << c.text;
  }
  EXPECT_EQ(Base64UrlDecode("Zg=="), "f");
  for (const char* bad : {"a", "Zm9vY", "Zm+v", "Zm/v", "Z$", "Zm 9"}) {
    EXPECT_EQ(Base64UrlDecode(bad), std::nullopt) << bad;
  }
}

TEST(TokenSignerTest, VerifiesItsOwnTokensUntilTheyExpireAndNothingElse) {
  const TokenSigner signer("secret-one");
  TokenClaims claims;
  claims.jti = "id-1";
  claims.tokenUse = "access";
  claims.exp = 2'000'000'000;
  claims.iat = 1'999'999'000;
  const std::string token = signer.sign(claims);

  TokenClaims read;
  EXPECT_EQ(signer.verify(token, claims.exp - 1, &read), TokenCheck::kValid);
  EXPECT_EQ(read.jti, "id-1");
  EXPECT_EQ(read.iat, claims.iat);
  EXPECT_EQ(signer.verify(token, claims.exp), TokenCheck::kExpired);
  EXPECT_EQ(TokenSigner("secret-two").verify(token, 0), TokenCheck::kBadSignature);

  std::string flipped = token;
  flipped[flipped.size() / 2] = flipped[flipped.size() / 2] == 'A' ? 'B' : 'A';
  EXPECT_NE(signer.verify(flipped, 0), TokenCheck::kValid);

  for (const char* malformed : {"", "abc", "a.b", "a.b.c.d", "e30.e30", "!!.e30.AA"}) {
    EXPECT_EQ(signer.verify(malformed, 0), TokenCheck::kMalformed) << malformed;
  }
  // A payload whose exp is a text is not a token of ours.
  const std::string header = token.substr(0, token.find('.'));
  EXPECT_EQ(signer.verify(header + "." + Base64UrlEncode(R"({"exp":"2000000000"})") + ".AA", 0),
            TokenCheck::kMalformed);
}

}  // namespace
}  // namespace obolo::sandbox::testing
