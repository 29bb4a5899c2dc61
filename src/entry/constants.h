// Fixed texts that go into every bid request.
//
// The kit never determines the device's real address or browser agent; the
// service receives these stand-ins.

#ifndef OBOLO_ENTRY_CONSTANTS_H_
#define OBOLO_ENTRY_CONSTANTS_H_

#include <string_view>

namespace obolo {

inline constexpr std::string_view IP_ADDRESS = "10.0.0.0";

inline constexpr std::string_view USER_AGENT =
    "Mozilla/5.0 (iPhone; CPU iPhone OS 6_0 like Mac OS X) AppleWebKit/536.26 (KHTML, like Gecko) "
    "Version/6.0 Mobile/10A5376e Safari/8536.25";
static_assert(USER_AGENT.size() == 135);

}  // namespace obolo

#endif  // OBOLO_ENTRY_CONSTANTS_H_
