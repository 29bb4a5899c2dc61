// A host app's article screen, for pictures of the paywall without a host app:
// a window with a status bar, the publisher's masthead and an article (a
// headline, a byline, a picture block and paragraphs) in a content view that
// the paywall can cover and blur.
//
// The demo, obolo-render and the snapshot tests show the kit over it. The
// article is laid out with constraints, so any screen size works. Main
// thread only.

#ifndef OBOLO_PREVIEW_ARTICLE_SCREEN_H_
#define OBOLO_PREVIEW_ARTICLE_SCREEN_H_

#include <memory>
#include <string>

#include "toolkit/geometry.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_window.h"

namespace obolo {

class ArticleScreen {
 public:
  // A visible key window of `size` (the main screen is set to that size too,
  // as the kit sizes full-screen views by it) showing `headline`.
  explicit ArticleScreen(CGSize size = {390, 844},
                         std::string headline = "City council approves the budget after a night of debate");

  // Resizes the screen, as a rotation or another device would; the tree is
  // laid out again at the end of the main loop's turn.
  void resize(CGSize size);

  const std::shared_ptr<UIWindow> window;
  const std::shared_ptr<UIViewController> host;
  // The view that shows the article, below the masthead.
  const std::shared_ptr<UIView> content;
};

}  // namespace obolo

#endif  // OBOLO_PREVIEW_ARTICLE_SCREEN_H_
