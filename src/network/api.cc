#include "network/api.h"

#include "platform/environment.h"

namespace obolo::API {

const std::string& BASE_URL() {
  static const std::string url = EnvironmentOverride("OBOLO_API_BASE_URL", "https://api.obolo.io");
  return url;
}

}  // namespace obolo::API
