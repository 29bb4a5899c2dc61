#include "platform/bundle.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/temporary_store.h"

namespace obolo {
namespace {

namespace fs = std::filesystem;

// How a host ships bundles: OBOLO_BUNDLE_PATH names one, or a directory of them.
TEST(BundleTest, TheConfiguredPathIsSearchedItselfAndOneLevelDownBeforeTheKitsOwn) {
  const fs::path root = testing::MakeTemporaryDirectory();
  auto make = [&](const std::string& directory, const std::string& info) {
    fs::create_directories(root / directory);
    std::ofstream(root / directory / "Info.json") << info;
    return root / directory;
  };
  const fs::path host = make("Host.bundle", R"({"identifier": "com.example.host"})");
  const fs::path kit_copy = make("Kit.bundle", R"({"identifier": "io.obolo.kit"})");
  make("Broken.bundle", "{not json");
  make("NumberIdentifier.bundle", R"({"identifier": 7})");

  EXPECT_FALSE(Bundle::withIdentifier("com.example.host").has_value());
  ::setenv("OBOLO_BUNDLE_PATH", root.c_str(), 1);
  EXPECT_EQ(Bundle::withIdentifier("com.example.host").value().bundlePath(), host);
  EXPECT_EQ(Bundle::withIdentifier(Bundle::kKitIdentifier).value().bundlePath(), kit_copy) << "the host's copy wins";
  ::setenv("OBOLO_BUNDLE_PATH", host.c_str(), 1);
  EXPECT_EQ(Bundle::withIdentifier("com.example.host").value().bundlePath(), host);
  ::unsetenv("OBOLO_BUNDLE_PATH");

  for (const char* not_a_bundle : {"Broken.bundle", "NumberIdentifier.bundle", "Missing.bundle"}) {
    EXPECT_FALSE(Bundle::atPath(root / not_a_bundle).has_value()) << not_a_bundle;
  }
  fs::remove_all(root);
}

TEST(BundleTest, MainBundleIsTheExecutablesDirectory) {
  EXPECT_EQ(fs::canonical(Bundle::main().bundlePath()),
            fs::canonical(fs::read_symlink("/proc/self/exe").parent_path()));
}

}  // namespace
}  // namespace obolo
