#include "ui/view_from_nib.h"

#include <cxxabi.h>

#include <cstdlib>

#include "platform/log.h"
#include "toolkit/ui_nib.h"

namespace obolo {

std::string UnqualifiedTypeName(const std::type_info& type) {
  int status = 0;
  char* demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
  std::string name = status == 0 && demangled != nullptr ? demangled : type.name();
  std::free(demangled);
  // Drop the namespaces and enclosing classes, but not those inside template
  // arguments.
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == '<') ++depth;
    if (name[i] == '>') --depth;
    if (depth == 0 && name.compare(i, 2, "::") == 0) start = i + 2;
  }
  return name.substr(start);
}

namespace internal {

std::shared_ptr<NSObject> FirstTopLevelObject(const std::string& name) {
  auto objects = UINib::instantiate(name);
  if (!objects) {
    LogLine("Could not load NIB named " + name);
    return nullptr;
  }
  if (objects->empty() || !objects->front()) {
    LogLine("NIB named " + name + " has no top-level object");
    return nullptr;
  }
  return objects->front();
}

void LogNibTypeMismatch(const std::string& name) {
  LogLine("The first object of NIB named " + name + " is not a " + name);
}

}  // namespace internal
}  // namespace obolo
