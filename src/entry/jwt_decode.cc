#include "entry/jwt_decode.h"

#include <array>
#include <cmath>

#include "platform/json_record_decoder.h"

namespace obolo {
namespace {

// The value of a standard base64 character, -1 outside the alphabet.
constexpr std::array<int, 256> kBase64Values = [] {
  std::array<int, 256> values{};
  values.fill(-1);
  constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < alphabet.size(); ++i) values[static_cast<unsigned char>(alphabet[i])] = static_cast<int>(i);
  return values;
}();

// Standard base64 ignoring unknown characters. Padding may only end the text,
// and the characters that count (digits and padding) must come in whole groups
// of four, with at most two "=" and never a single digit in the last group.
std::optional<std::string> DecodeBase64IgnoringUnknown(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 3 / 4);
  std::uint32_t group = 0;
  int digits = 0;        // digits in the current group
  size_t counted = 0;    // digits and padding seen
  int padding = 0;
  for (const char c : text) {
    if (c == '=') {
      ++padding;
      ++counted;
      continue;
    }
    const int value = kBase64Values[static_cast<unsigned char>(c)];
    if (value < 0) continue;
    if (padding > 0) return std::nullopt;  // digits after padding
    group = (group << 6) | static_cast<std::uint32_t>(value);
    ++counted;
    if (++digits == 4) {
      bytes.push_back(static_cast<char>((group >> 16) & 0xFF));
      bytes.push_back(static_cast<char>((group >> 8) & 0xFF));
      bytes.push_back(static_cast<char>(group & 0xFF));
      group = 0;
      digits = 0;
    }
  }
  if (counted % 4 != 0 || padding > 2) return std::nullopt;
  if (padding > 0 && digits + padding != 4) return std::nullopt;
  if (digits == 1) return std::nullopt;
  if (digits == 2) {
    bytes.push_back(static_cast<char>((group >> 4) & 0xFF));
  } else if (digits == 3) {
    bytes.push_back(static_cast<char>((group >> 10) & 0xFF));
    bytes.push_back(static_cast<char>((group >> 2) & 0xFF));
  }
  return bytes;
}

}  // namespace

JWTDecode& JWTDecode::shared() {
  static JWTDecode instance;
  return instance;
}

TokenData JWTDecode::decode(std::string_view jwtToken) const {
  // Only the second segment is read; a token without one has no payload.
  const size_t first_dot = jwtToken.find('.');
  if (first_dot == std::string_view::npos) return TokenData{};
  std::string_view payload = jwtToken.substr(first_dot + 1);
  payload = payload.substr(0, payload.find('.'));
  return decodeJWTPart(payload);
}

TokenData JWTDecode::decodeJWTPart(std::string_view segment) const {
  auto bytes = base64UrlDecode(segment);
  if (!bytes) return TokenData{};
  auto decoded = DecodeRecordInPlace<TokenData>(*bytes);
  if (!decoded) return TokenData{};
  return std::move(decoded).value();
}

std::optional<std::string> JWTDecode::base64UrlDecode(std::string_view segment) const {
  std::string text(segment);
  for (char& c : text) {
    if (c == '-') c = '+';
  }
  for (char& c : text) {
    if (c == '_') c = '/';
  }
  const double length = static_cast<double>(text.size());
  const double required = 4 * std::ceil(length / 4);
  const auto padding = static_cast<size_t>(required - length);
  text.append(padding, '=');
  return DecodeBase64IgnoringUnknown(text);
}

Date dateFromMilliseconds(std::int64_t value) { return Date{static_cast<double>(value)}; }

}  // namespace obolo
