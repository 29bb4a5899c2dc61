#include "network/api.h"

#include "platform/environment.h"
#include "platform/no_destructor.h"

namespace obolo::API {

const std::string& BASE_URL() {
  static const NoDestructor<std::string> url(EnvironmentOverride("OBOLO_API_BASE_URL", "https://api.obolo.io"));
  return *url;
}

}  // namespace obolo::API
