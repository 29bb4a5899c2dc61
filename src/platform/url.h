// Whether a text can be made into a URL.

#ifndef OBOLO_PLATFORM_URL_H_
#define OBOLO_PLATFORM_URL_H_

#include <string_view>

namespace obolo {

// True for a non-empty text made only of the characters a URL may hold
// (letters, digits, "-._~:/?#[]@!$&'()*+,;=" and "%" followed by two hex
// digits). Like the platform's URL parser, it does not insist on a scheme or a
// host: such a text still fails later, at the transfer.
bool IsValidUrl(std::string_view text);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_URL_H_
