// Case-insensitive text helpers for e-mail addresses, domains and header names
// (ASCII only, as those are).

#ifndef OBOLO_SANDBOX_TEXT_CASE_H_
#define OBOLO_SANDBOX_TEXT_CASE_H_

#include <string>
#include <string_view>

namespace obolo::sandbox {

std::string AsciiLower(std::string_view text);
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_TEXT_CASE_H_
