#include "entry/kit_bundle.h"

namespace obolo {

const std::optional<Bundle>& obBundle() {
  static const std::optional<Bundle> bundle = Bundle::withIdentifier(Bundle::kKitIdentifier);
  return bundle;
}

Bundle KitResourceBundle() { return obBundle() ? *obBundle() : Bundle::main(); }

}  // namespace obolo
