// The kit's own resources: its images (the storyboard is compiled in).

#ifndef OBOLO_ENTRY_KIT_BUNDLE_H_
#define OBOLO_ENTRY_KIT_BUNDLE_H_

#include <optional>

#include "platform/bundle.h"

namespace obolo {

// The bundle whose identifier is the kit's ("io.obolo.kit"), looked up once at
// first use and kept for the process, present or absent. When absent, the kit
// looks for its images in the application's main bundle.
const std::optional<Bundle>& obBundle();

// obBundle(), or the application's main bundle when it is absent.
Bundle KitResourceBundle();

}  // namespace obolo

#endif  // OBOLO_ENTRY_KIT_BUNDLE_H_
