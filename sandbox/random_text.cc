#include "sandbox/random_text.h"

#include <openssl/rand.h>

#include <random>
#include <vector>

namespace obolo::sandbox {
namespace {

std::vector<unsigned char> RandomBytes(std::size_t count) {
  std::vector<unsigned char> bytes(count);
  if (count > 0 && RAND_bytes(bytes.data(), static_cast<int>(count)) != 1) {
    std::random_device device;
    for (auto& byte : bytes) byte = static_cast<unsigned char>(device());
  }
  return bytes;
}

constexpr char kHex[] = "0123456789abcdef";

}  // namespace

std::string RandomHex(std::size_t bytes) {
  std::string text;
  for (unsigned char byte : RandomBytes(bytes)) {
    text += kHex[byte >> 4];
    text += kHex[byte & 15];
  }
  return text;
}

std::string RandomDigits(std::size_t count) {
  std::string text;
  while (text.size() < count) {
    for (unsigned char byte : RandomBytes(count)) {
      if (byte < 250 && text.size() < count) text += static_cast<char>('0' + byte % 10);  // no bias
    }
  }
  return text;
}

std::string RandomUuid() {
  auto bytes = RandomBytes(16);
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kHex[bytes[i] >> 4];
    text += kHex[bytes[i] & 15];
  }
  return text;
}

}  // namespace obolo::sandbox
