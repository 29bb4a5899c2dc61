// Resource bundles: directories of resources the kit and its host load by name.
//
// A bundle is a directory that carries an `Info.json` naming its identifier,
// e.g. {"identifier": "io.obolo.kit"}. The kit's own bundle (identifier
// "io.obolo.kit") holds the kit's images: the repository's resources/
// directory, installed as share/obolo/ in the kit's prefix. An installed kit
// finds it there by itself; a host that ships the kit's resources elsewhere
// points OBOLO_BUNDLE_PATH at them. Storyboards and view layouts are compiled
// in (see UIStoryboard), so a bundle holds only files.
//
// Bundles are plain values; every call reads the file system afresh and may be
// made from any thread.

#ifndef OBOLO_PLATFORM_BUNDLE_H_
#define OBOLO_PLATFORM_BUNDLE_H_

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace obolo {

class Bundle {
 public:
  // The kit's bundle identifier.
  static constexpr std::string_view kKitIdentifier = "io.obolo.kit";

  // The bundle with this identifier, looked for in order in: the directory
  // named by OBOLO_BUNDLE_PATH (itself and the directories directly in it), the
  // executable's directory (likewise), then the kit's own resource directories:
  // the source tree's for programs of the kit's build tree, share/obolo/ of
  // the prefix the executable is installed in, share/obolo/ of the prefix the
  // kit was installed in, and the source tree's. Absent when none carries the
  // identifier.
  static std::optional<Bundle> withIdentifier(std::string_view identifier);

  // The directory at `path` as a bundle, when it carries an Info.json.
  static std::optional<Bundle> atPath(const std::filesystem::path& path);

  // The application's own resources: the directory of the running executable.
  // Its identifier is the one in an Info.json there, or empty.
  static Bundle main();

  // The bundle's directory, and the identifier its Info.json declares.
  const std::filesystem::path& bundlePath() const { return path_; }
  const std::string& bundleIdentifier() const { return identifier_; }

  // The file `name.extension` in the bundle's directory (`name` alone for an
  // empty extension), when it exists.
  std::optional<std::filesystem::path> pathForResource(std::string_view name,
                                                       std::string_view extension) const;

  friend bool operator==(const Bundle&, const Bundle&) = default;

 private:
  Bundle(std::filesystem::path path, std::string identifier)
      : path_(std::move(path)), identifier_(std::move(identifier)) {}

  std::filesystem::path path_;
  std::string identifier_;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_BUNDLE_H_
