// A view built from a layout ("nib") named after its type.
//
// The platform loads the layout file named after the type from the type's
// bundle and returns its first top-level object. Here layouts are registered
// in code with UINib::registerNib under the type's unqualified name (for
// obolo::PaywallCardView, "PaywallCardView"), and fromNib<T>() builds that
// layout and returns its first top-level object as a T. When no layout has the
// name, the layout is empty, or its first object is not a T, it logs one line
// saying so and returns null; it never crashes. Main thread only.

#ifndef OBOLO_UI_VIEW_FROM_NIB_H_
#define OBOLO_UI_VIEW_FROM_NIB_H_

#include <memory>
#include <string>
#include <typeinfo>

#include "toolkit/ns_object.h"

namespace obolo {

// The unqualified name of a type ("PaywallCardView" for obolo::PaywallCardView).
std::string UnqualifiedTypeName(const std::type_info& type);

namespace internal {
// The layout's first top-level object; null (after logging why) when there is none.
std::shared_ptr<NSObject> FirstTopLevelObject(const std::string& name);
// Logs that the layout's first object is not of the requested type.
void LogNibTypeMismatch(const std::string& name);
}  // namespace internal

// The layout named after T, built, as a T; null when there is none (above).
template <class T>
std::shared_ptr<T> fromNib() {
  const std::string name = UnqualifiedTypeName(typeid(T));
  auto object = internal::FirstTopLevelObject(name);
  if (!object) return nullptr;
  auto view = std::dynamic_pointer_cast<T>(object);
  if (!view) internal::LogNibTypeMismatch(name);
  return view;
}

}  // namespace obolo

#endif  // OBOLO_UI_VIEW_FROM_NIB_H_
