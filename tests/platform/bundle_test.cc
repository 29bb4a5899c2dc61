#include "platform/bundle.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace obolo {
namespace {

namespace fs = std::filesystem;

// A scratch directory for bundles, removed (with OBOLO_BUNDLE_PATH) afterwards.
class BundleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root_ = fs::temp_directory_path() / ("obolo-bundle-test-" + std::to_string(::getpid()));
    fs::create_directories(root_);
  }
  void TearDown() override {
    ::unsetenv("OBOLO_BUNDLE_PATH");
    fs::remove_all(root_);
  }

  fs::path makeBundle(const std::string& directory, const std::string& info) {
    fs::path path = root_ / directory;
    fs::create_directories(path);
    std::ofstream(path / "Info.json") << info;
    return path;
  }

  fs::path root_;
};

TEST_F(BundleTest, KitBundleIsTheSourceResourcesWithTheKitImages) {
  auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  ASSERT_TRUE(kit.has_value());
  EXPECT_EQ(kit->bundleIdentifier(), "io.obolo.kit");
  for (const char* image : {"checkbox", "blankbox", "background", "wallet-icon"}) {
    EXPECT_TRUE(kit->pathForResource(image, "png").has_value()) << image;
  }
  EXPECT_FALSE(kit->pathForResource("missing", "png").has_value());
  EXPECT_FALSE(kit->pathForResource("", "png").has_value());
}

TEST_F(BundleTest, UnknownIdentifierHasNoBundle) {
  EXPECT_FALSE(Bundle::withIdentifier("com.example.nothing").has_value());
}

TEST_F(BundleTest, ConfiguredPathIsSearchedItselfAndOneLevelDownBeforeTheSourceResources) {
  const fs::path host = makeBundle("Host.bundle", R"({"identifier": "com.example.host"})");
  const fs::path kit_copy = makeBundle("Kit.bundle", R"({"identifier": "io.obolo.kit"})");
  ::setenv("OBOLO_BUNDLE_PATH", root_.c_str(), 1);

  auto found = Bundle::withIdentifier("com.example.host");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->bundlePath(), host);
  auto kit = Bundle::withIdentifier("io.obolo.kit");
  ASSERT_TRUE(kit.has_value());
  EXPECT_EQ(kit->bundlePath(), kit_copy) << "a host's copy of the kit's resources wins";

  ::setenv("OBOLO_BUNDLE_PATH", host.c_str(), 1);
  found = Bundle::withIdentifier("com.example.host");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->bundlePath(), host);
}

TEST_F(BundleTest, DirectoriesWithoutAReadableIdentifierAreNotBundles) {
  makeBundle("Broken.bundle", "{not json");
  makeBundle("NoIdentifier.bundle", R"({"name": "x"})");
  makeBundle("NumberIdentifier.bundle", R"({"identifier": 7})");
  EXPECT_FALSE(Bundle::atPath(root_ / "Broken.bundle").has_value());
  EXPECT_FALSE(Bundle::atPath(root_ / "NoIdentifier.bundle").has_value());
  EXPECT_FALSE(Bundle::atPath(root_ / "NumberIdentifier.bundle").has_value());
  EXPECT_FALSE(Bundle::atPath(root_ / "Missing.bundle").has_value());
}

TEST_F(BundleTest, MainBundleIsTheExecutablesDirectory) {
  EXPECT_EQ(fs::canonical(Bundle::main().bundlePath()),
            fs::canonical(fs::read_symlink("/proc/self/exe").parent_path()));
}

}  // namespace
}  // namespace obolo
