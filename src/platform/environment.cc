#include "platform/environment.h"

#include <cstdlib>

namespace obolo {

std::string EnvironmentOverride(const char* name, std::string_view fallback) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::string(fallback);
  return value;
}

}  // namespace obolo
