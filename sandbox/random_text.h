// Unpredictable texts for keys, codes and token ids, from OpenSSL's generator.
// Safe to call from any thread.

#ifndef OBOLO_SANDBOX_RANDOM_TEXT_H_
#define OBOLO_SANDBOX_RANDOM_TEXT_H_

#include <cstddef>
#include <string>

namespace obolo::sandbox {

// `bytes` random bytes as lower-case hexadecimal (twice as many characters).
std::string RandomHex(std::size_t bytes);
// `count` random decimal digits; leading zeros included.
std::string RandomDigits(std::size_t count);
// A random (version 4) UUID in its usual 8-4-4-4-12 text form.
std::string RandomUuid();

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_RANDOM_TEXT_H_
