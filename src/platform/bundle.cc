#include "platform/bundle.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "platform/environment.h"

// Where the build put the kit's resources (src/CMakeLists.txt); empty when
// compiled without it.
#ifndef OBOLO_SOURCE_RESOURCES_DIR
#define OBOLO_SOURCE_RESOURCES_DIR ""
#endif
#ifndef OBOLO_BUILD_TREE_DIR
#define OBOLO_BUILD_TREE_DIR ""
#endif
#ifndef OBOLO_INSTALLED_RESOURCES_DIR
#define OBOLO_INSTALLED_RESOURCES_DIR ""
#endif
#ifndef OBOLO_RESOURCES_DIR_FROM_BINDIR
#define OBOLO_RESOURCES_DIR_FROM_BINDIR ""
#endif

namespace obolo {
namespace {

namespace fs = std::filesystem;

// The identifier an Info.json in `directory` declares, if it is readable.
std::optional<std::string> DeclaredIdentifier(const fs::path& directory) {
  std::ifstream file(directory / "Info.json");
  if (!file) return std::nullopt;
  const nlohmann::json info = nlohmann::json::parse(file, nullptr, /*allow_exceptions=*/false);
  if (!info.is_object()) return std::nullopt;
  auto identifier = info.find("identifier");
  if (identifier == info.end() || !identifier->is_string()) return std::nullopt;
  return identifier->get<std::string>();
}

fs::path ExecutableDirectory() {
  std::error_code error;
  fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (error) return fs::current_path(error);
  return executable.parent_path();
}

// A directory to search and whether the directories directly in it count too.
struct SearchRoot {
  fs::path path;
  bool children;
};

// Whether `path` lies inside `directory` (both absolute).
bool IsWithin(const fs::path& path, const fs::path& directory) {
  if (directory.empty()) return false;
  const fs::path relative = path.lexically_normal().lexically_relative(directory.lexically_normal());
  return !relative.empty() && *relative.begin() != "..";
}

// The kit is a static library, so it cannot ask where its own file lies; it
// knows where its build put the resources and where an install puts them:
//   1. OBOLO_BUNDLE_PATH, the host's word;
//   2. the executable's directory, where a host ships its bundles;
//   3. the source tree, for the tests and tools of the kit's own build tree;
//   4. <bindir>/../share/obolo beside the executable, for a program installed
//      into the kit's prefix, wherever that prefix has been moved;
//   5. the data directory of the prefix the kit was configured for, where
//      `cmake --install` put them;
//   6. the source tree, for programs built elsewhere against a kit that has
//      not been installed (add_subdirectory).
std::vector<SearchRoot> SearchRoots() {
  std::vector<SearchRoot> roots;
  const std::string configured = EnvironmentOverride("OBOLO_BUNDLE_PATH", "");
  if (!configured.empty()) roots.push_back({configured, true});
  const fs::path executable_directory = ExecutableDirectory();
  roots.push_back({executable_directory, true});
  const fs::path source = OBOLO_SOURCE_RESOURCES_DIR;
  if (!source.empty() && IsWithin(executable_directory, OBOLO_BUILD_TREE_DIR))
    roots.push_back({source, false});
  const fs::path from_bindir = OBOLO_RESOURCES_DIR_FROM_BINDIR;
  if (!from_bindir.empty()) roots.push_back({executable_directory / from_bindir, false});
  const fs::path installed = OBOLO_INSTALLED_RESOURCES_DIR;
  if (!installed.empty()) roots.push_back({installed, false});
  if (!source.empty()) roots.push_back({source, false});
  return roots;
}

}  // namespace

std::optional<Bundle> Bundle::atPath(const fs::path& path) {
  auto identifier = DeclaredIdentifier(path);
  if (!identifier) return std::nullopt;
  return Bundle(path, *identifier);
}

std::optional<Bundle> Bundle::withIdentifier(std::string_view identifier) {
  for (const SearchRoot& root : SearchRoots()) {
    std::vector<fs::path> candidates{root.path};
    if (root.children) {
      std::error_code error;
      for (fs::directory_iterator it(root.path, error), end; !error && it != end; it.increment(error)) {
        if (it->is_directory(error)) candidates.push_back(it->path());
      }
    }
    for (const fs::path& candidate : candidates) {
      if (DeclaredIdentifier(candidate) == identifier) return Bundle(candidate, std::string(identifier));
    }
  }
  return std::nullopt;
}

Bundle Bundle::main() {
  fs::path directory = ExecutableDirectory();
  std::string identifier = DeclaredIdentifier(directory).value_or("");
  return Bundle(std::move(directory), std::move(identifier));
}

std::optional<fs::path> Bundle::pathForResource(std::string_view name, std::string_view extension) const {
  if (name.empty()) return std::nullopt;
  std::string file(name);
  if (!extension.empty()) file.append(".").append(extension);
  fs::path path = path_ / file;
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  return path;
}

}  // namespace obolo
