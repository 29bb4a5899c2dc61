// A reader's screen for snapshot tests: the article screen the previews use,
// with the kit configured for the sandbox's seeded publisher and the main loop
// in virtual time (the reveal's 5 seconds pass at once with advance()).

#ifndef OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_SCREEN_H_
#define OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_SCREEN_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "entry/position.h"
#include "paywall/paywall_vc.h"
#include "preview/article_screen.h"
#include "toolkit/render/rendered_image.h"

namespace obolo::testing {

class SnapshotScreen {
 public:
  // REQUIRES: the sandbox environment and a temporary store.
  explicit SnapshotScreen(std::string articleUrl, CGSize size = {390, 844});
  ~SnapshotScreen();

  // Constructs Obolo for the article and loads the paywall over the article
  // at `position`.
  std::shared_ptr<PaywallVC> load(Position position = Position::center);

  // Runs the main loop (real time, for the network) until `done` holds.
  bool waitFor(const std::function<bool()>& done, std::chrono::seconds timeout = std::chrono::seconds(15));
  // Until the card shows the service's texts and the publisher's logo.
  bool waitForCard(const PaywallVC& paywall);
  // Moves virtual time on.
  void advance(std::chrono::duration<double> duration);

  // The whole screen, laid out.
  RenderedImage render(double scale = 1);

  ArticleScreen screen;
  const std::string articleUrl;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SNAPSHOTS_SNAPSHOT_SCREEN_H_
