// Without the font files, text cannot be set: a clear error, never a crash.
// A program of its own, since the fonts load once per process.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "support/log_capture.h"
#include "toolkit/text_layout.h"
#include "toolkit/ui_label.h"

namespace obolo {
namespace {

TEST(MissingFontTest, TextLaysOutEmptyAndTheErrorNamesTheFile) {
  const auto directory = std::filesystem::temp_directory_path() / "obolo-no-fonts";
  std::filesystem::create_directories(directory);
  setenv("OBOLO_FONT_DIR", directory.c_str(), 1);
  testing::LogCapture log;

  auto service = TextLayoutService::shared();
  const std::string error = service->error();
  EXPECT_NE(error.find((directory / "DejaVuSans.ttf").string()), std::string::npos) << error;
  EXPECT_NE(error.find("fonts-dejavu-core"), std::string::npos) << "says which package provides it";
  EXPECT_EQ(service->layout("Unlock", TextStyle(), 0).size, (CGSize{0, 0}));

  auto label = std::make_shared<UILabel>();
  label->setText("Read the whole article");
  EXPECT_EQ(label->intrinsicContentSize(), (CGSize{0, 0}));
  EXPECT_EQ(log.lines().size(), 1u) << "reported once, at first use";
}

}  // namespace
}  // namespace obolo
