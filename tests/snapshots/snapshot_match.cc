#include "snapshot_match.h"

#include <cairo.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace obolo::testing {
namespace {

std::uint32_t Raw(const RenderedImage& image, int x, int y) {
  const unsigned char* row =
      cairo_image_surface_get_data(image.surface()) + static_cast<std::ptrdiff_t>(y) *
                                                          cairo_image_surface_get_stride(image.surface());
  return reinterpret_cast<const std::uint32_t*>(row)[x];
}

int ChannelDistance(std::uint32_t a, std::uint32_t b) {
  int largest = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    const int pa = static_cast<int>((a >> shift) & 0xff);
    const int pb = static_cast<int>((b >> shift) & 0xff);
    largest = std::max(largest, std::abs(pa - pb));
  }
  return largest;
}

}  // namespace

ImageComparison CompareImages(const RenderedImage& expected, const RenderedImage& actual, int tolerance) {
  ImageComparison result;
  if (!expected.ok() || !actual.ok() || expected.width() != actual.width() ||
      expected.height() != actual.height()) {
    return result;
  }
  result.sameSize = true;
  cairo_surface_flush(expected.surface());
  cairo_surface_flush(actual.surface());
  for (int y = 0; y < expected.height(); ++y) {
    for (int x = 0; x < expected.width(); ++x) {
      const int distance = ChannelDistance(Raw(expected, x, y), Raw(actual, x, y));
      result.largestDifference = std::max(result.largestDifference, distance);
      if (distance > tolerance) ++result.differingPixels;
    }
  }
  return result;
}

RenderedImage DiffImage(const RenderedImage& expected, const RenderedImage& actual, int tolerance) {
  if (!expected.ok() || !actual.ok()) return RenderedImage::Failed("nothing to compare");
  const int width = std::min(expected.width(), actual.width());
  const int height = std::min(expected.height(), actual.height());
  cairo_surface_t* diff = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
  cairo_t* cr = cairo_create(diff);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_set_source_surface(cr, expected.surface(), 0, 0);
  cairo_paint_with_alpha(cr, 0.25);
  cairo_set_source_rgb(cr, 1, 0, 1);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (ChannelDistance(Raw(expected, x, y), Raw(actual, x, y)) > tolerance) cairo_rectangle(cr, x, y, 1, 1);
    }
  }
  cairo_fill(cr);
  cairo_destroy(cr);
  return RenderedImage::Adopt(diff);
}

bool RecordingSnapshots() {
  const char* value = std::getenv("OBOLO_RECORD_SNAPSHOTS");
  return value != nullptr && std::string(value) == "1";
}

std::string ReferencePath(const std::string& name) {
  return (std::filesystem::path(OBOLO_SNAPSHOT_REFERENCE_DIR) / (name + ".png")).string();
}

std::string OutputPath(const std::string& name) {
  return (std::filesystem::path(OBOLO_SNAPSHOT_OUTPUT_DIR) / (name + ".png")).string();
}

::testing::AssertionResult MatchesSnapshot(const RenderedImage& image, const std::string& name,
                                           const std::string& outputName) {
  if (!image.ok()) return ::testing::AssertionFailure() << "no picture to compare: " << image.error();
  if (RecordingSnapshots()) {
    std::filesystem::create_directories(OBOLO_SNAPSHOT_REFERENCE_DIR);
    if (const std::string error = image.writePng(ReferencePath(name)); !error.empty()) {
      return ::testing::AssertionFailure() << "cannot record " << name << ": " << error;
    }
    std::fprintf(stderr, "recorded %s\n", ReferencePath(name).c_str());
    return ::testing::AssertionSuccess();
  }

  const RenderedImage reference = RenderedImage::FromPngFile(ReferencePath(name));
  if (!reference.ok()) {
    return ::testing::AssertionFailure() << "no reference picture " << ReferencePath(name)
                                         << "; record it with scripts/record_snapshots.sh";
  }
  const ImageComparison comparison = CompareImages(reference, image);
  const long allowed = static_cast<long>(kAllowedShare * image.width() * image.height());
  if (comparison.sameSize && comparison.differingPixels <= allowed) return ::testing::AssertionSuccess();

  const std::string shown = outputName.empty() ? name : outputName;
  std::filesystem::create_directories(OBOLO_SNAPSHOT_OUTPUT_DIR);
  image.writePng(OutputPath(shown));
  auto failure = ::testing::AssertionFailure();
  if (!comparison.sameSize) {
    failure << name << ": the picture is " << image.width() << "x" << image.height() << " pixels, the reference "
            << reference.width() << "x" << reference.height();
  } else {
    DiffImage(reference, image).writePng(OutputPath(shown + ".diff"));
    failure << name << ": " << comparison.differingPixels << " pixels differ (at most " << allowed
            << " may), by up to " << comparison.largestDifference << " in a channel; differences in "
            << OutputPath(shown + ".diff");
  }
  return failure << "; the picture is " << OutputPath(shown);
}

}  // namespace obolo::testing
