// Compares pictures with the reference pictures kept in the repository.
//
// References live in tests/snapshots/reference/<name>.png. A picture matches
// when it has the reference's size and at most a small number of its pixels
// (kAllowedShare of them) differ by more than kChannelTolerance in any
// channel: enough to absorb rounding in the libraries, far too little for a
// view that moved, grew or changed colour. When a picture does not match, it
// is written to <build>/snapshots/<name>.png with <name>.diff.png beside it
// (the reference faded, the differing pixels in magenta), and the failure
// says where they are.
//
// Re-recording: with OBOLO_RECORD_SNAPSHOTS=1 in the environment, MatchesSnapshot
// writes the picture as the new reference and succeeds
// (scripts/record_snapshots.sh does this for every snapshot test).

#ifndef OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_MATCH_H_
#define OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_MATCH_H_

#include <gtest/gtest.h>

#include <string>

#include "toolkit/render/rendered_image.h"

namespace obolo::testing {

inline constexpr int kChannelTolerance = 10;
inline constexpr double kAllowedShare = 0.001;

struct ImageComparison {
  bool sameSize = false;
  // Pixels with a channel further apart than the tolerance.
  long differingPixels = 0;
  // The largest difference of one channel anywhere, 0 to 255.
  int largestDifference = 0;
};

ImageComparison CompareImages(const RenderedImage& expected, const RenderedImage& actual,
                              int tolerance = kChannelTolerance);

// The reference faded to a light grey, with the pixels that differ in magenta.
RenderedImage DiffImage(const RenderedImage& expected, const RenderedImage& actual, int tolerance = kChannelTolerance);

// True when re-recording was asked for (OBOLO_RECORD_SNAPSHOTS=1).
bool RecordingSnapshots();

std::string ReferencePath(const std::string& name);
std::string OutputPath(const std::string& name);

// Whether `image` matches the reference `name`, as described above; pictures of
// a failure are written under `outputName` (the reference's name by default).
::testing::AssertionResult MatchesSnapshot(const RenderedImage& image, const std::string& name,
                                           const std::string& outputName = "");

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_MATCH_H_
