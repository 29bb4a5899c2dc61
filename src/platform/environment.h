// Production constants that a developer can point elsewhere (the sandbox, a
// staging service) through environment variables.

#ifndef OBOLO_PLATFORM_ENVIRONMENT_H_
#define OBOLO_PLATFORM_ENVIRONMENT_H_

#include <string>
#include <string_view>

namespace obolo {

// The value of environment variable `name` when it is set and not empty,
// otherwise `fallback`. Callers keep the result in a function-local static, so
// each variable is read once, at first use, and stays fixed for the process.
std::string EnvironmentOverride(const char* name, std::string_view fallback);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_ENVIRONMENT_H_
