// What of a service's text may reach a host's observer: prices, words and the
// kit's decoding sentences pass as they are; tokens, keys and e-mail addresses
// the text happens to carry do not.

#include "entry/credential_mask.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "network/response_records.h"

namespace obolo {
namespace {

// Shaped like the sandbox's: a token of three parts, keys of "dk-"/"lk-" and
// 32 hexadecimal digits.
const std::string kToken =
    "eyJhbGciOiJIUzI1NiIsInR5cCI6IkpXVCJ9.eyJzdWIiOiIxMDEiLCJ1c2VybmFtZSI6InJlYWRlckBleGFtcGxlLmNvbSJ9."
    "Xk3p0c2VJq9bQ1sLr8uTn6WmZ4aYe7fHd5gCiKoB2tA";
const std::string kDeviceKey = "dk-3f9a1c0e77b24d5a8e6f0b1c2d3e4f50";
const std::string kLoginKey = "lk-0a1b2c3d4e5f60718293a4b5c6d7e8f9";

TEST(CredentialMaskTest, TextsWithoutCredentialsPassUnchanged) {
  const std::vector<std::string> texts = {
      "",
      "EUR 0.50",
      "0,50 €",
      "$1.99 per article",
      "The service refused the request",
      "Your session is over; please log in again.",
      "keyJar and monkeyJump are words",                        // "eyJ" inside a word
      "isPaywallEnabledInCountry articlePriceInLocalCurrency",  // long names without digits
      "write to support at example dot com",
      "a@b and user@localhost",       // no domain with a dot
      "order 1234567890 costs 2.50",  // digits alone
  };
  for (const std::string& text : texts) EXPECT_EQ(MaskCredentials(text, {}), text);
}

TEST(CredentialMaskTest, TheKitsOwnDecodingSentencesPassUnchanged) {
  // Sentences the decoder writes for answers that do not decode: they name
  // the record's members, never a value of the answer.
  const std::vector<std::string> answers = {
      "",
      "{\"success\": true, \"data\": {\"oboloBidId\": 1",
      "[1, 2]",
      "{\"success\": \"yes\"}",
      "{\"data\": {\"customerInfo\": {\"accessToken\": 12}}}",
      "{\"data\": {\"oboloBidId\": 1.5}}",
      "{\"data\": {\"paywallSettings\": []}}",
      "<html><body>502 Bad Gateway</body></html>",
  };
  for (const std::string& answer : answers) {
    SCOPED_TRACE(answer);
    const auto decoded = OboloData::decode(answer);
    ASSERT_FALSE(decoded);
    EXPECT_EQ(MaskCredentials(decoded.error(), {kToken, kDeviceKey}), decoded.error());
  }
}

TEST(CredentialMaskTest, CredentialsAreMaskedWhereverTheyStand) {
  const std::string email = "reader@example.com";
  const std::vector<std::string> known = {kToken, "", kDeviceKey, email};
  const std::string payload = kToken.substr(kToken.find('.') + 1, kToken.rfind('.') - kToken.find('.') - 1);
  const std::string signature = kToken.substr(kToken.rfind('.') + 1);
  struct Case {
    std::string text;
    std::vector<std::string> known;
    std::string masked;
  };
  const std::vector<Case> cases = {
      // Known session values, wherever and however often they occur.
      {"token " + kToken + " expired", known, "token [hidden] expired"},
      {kDeviceKey + "/" + kDeviceKey, known, "[hidden]/[hidden]"},
      {"unknown customer " + email + ".", known, "unknown customer [hidden]."},
      // The same shapes when the kit does not know them.
      {"Bearer " + kToken, {}, "Bearer [hidden]"},
      {"token=" + kToken + "; retry", {}, "token=[hidden]; retry"},
      {"expired: " + kToken + ".", {}, "expired: [hidden]."},
      {"claims " + payload + " rejected", {}, "claims [hidden] rejected"},
      {"signature " + signature + " invalid", {}, "signature [hidden] invalid"},
      {"device " + kDeviceKey + " and login " + kLoginKey, {}, "device [hidden] and login [hidden]"},
      {"event 0f8fad5b-d9cb-469f-a165-70867728950e", {}, "event [hidden]"},
      {"mail first.last+news@mail.example.co.uk, then", {}, "mail [hidden], then"},
      {"<" + email + ">", {}, "<[hidden]>"},
      {"two: a@x.io b@y.io", {}, "two: [hidden] [hidden]"},
      // A price that carries one keeps the rest.
      {"EUR 0.50 " + kToken, known, "EUR 0.50 [hidden]"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::string masked = MaskCredentials(c.text, c.known);
    EXPECT_EQ(masked, c.masked);
    for (const std::string& secret : {kToken, payload, signature, kDeviceKey, kLoginKey, email}) {
      EXPECT_EQ(masked.find(secret), std::string::npos) << secret;
    }
  }
}

TEST(CredentialMaskTest, OnlyTextsWithLongWordsOrAnAtSignMayCarryACredential) {
  struct Case {
    std::string text;
    bool may;
  };
  const std::vector<Case> cases = {
      {"", false},
      {"€0.50", false},
      {"EUR 0.50 per article", false},
      {"1234567 abc", false},
      {"12345678", true},
      {"a@b", true},
      {"The data couldn't be read because \"data.oboloBidId\" is missing.", true},
      {"Bearer " + kToken, true},
      {kDeviceKey, true},
  };
  for (const Case& c : cases) EXPECT_EQ(MayCarryCredential(c.text), c.may) << c.text;
}

}  // namespace
}  // namespace obolo
