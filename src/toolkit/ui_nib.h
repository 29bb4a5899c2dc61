// View layouts ("nibs") by name, built in code.
//
// The platform loads a layout file of a given name from a bundle; here a layout
// is a function registered under a name that builds fresh top-level objects
// each time it is loaded. Layouts are compiled in, so, like storyboards, they
// are found by name alone. Registration is safe from any thread; loading runs
// on the main thread, since layouts make views.

#ifndef OBOLO_TOOLKIT_UI_NIB_H_
#define OBOLO_TOOLKIT_UI_NIB_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/ns_object.h"

namespace obolo {

class UINib {
 public:
  // What a layout holds, and the function that makes a fresh copy of it.
  using TopLevelObjects = std::vector<std::shared_ptr<NSObject>>;
  using Loader = std::function<TopLevelObjects()>;

  // Registers (or replaces) the layout `name`.
  static void registerNib(std::string name, Loader loader);
  // Fresh top-level objects of the layout `name`; absent when none is registered.
  static std::optional<TopLevelObjects> instantiate(std::string_view name);
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_NIB_H_
