#include "platform/bundle.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "platform/environment.h"

#ifndef OBOLO_SOURCE_RESOURCES_DIR
#define OBOLO_SOURCE_RESOURCES_DIR ""
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

std::vector<SearchRoot> SearchRoots() {
  std::vector<SearchRoot> roots;
  const std::string configured = EnvironmentOverride("OBOLO_BUNDLE_PATH", "");
  if (!configured.empty()) roots.push_back({configured, true});
  roots.push_back({ExecutableDirectory(), true});
  const std::string source = OBOLO_SOURCE_RESOURCES_DIR;
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
