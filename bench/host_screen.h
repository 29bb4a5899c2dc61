// A host app's article screen, as the time-to-card figures load a paywall
// over it, and what "the reader sees the card" means for them.

#ifndef OBOLO_BENCH_HOST_SCREEN_H_
#define OBOLO_BENCH_HOST_SCREEN_H_

#include <memory>

#include "paywall/paywall_vc.h"
#include "sandbox/default_world.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_window.h"
#include "toolkit/ui_window_scene.h"

namespace obolo::bench {

// The article's view in a key window, as a publisher's app has it.
struct HostScreen {
  HostScreen()
      : window(std::make_shared<UIWindow>(std::make_shared<UIWindowScene>())),
        host(std::make_shared<UIViewController>()),
        content(std::make_shared<UIView>(CGRect{{0, 100}, {390, 600}})) {
    auto article = std::make_shared<UILabel>(CGRect{{16, 16}, {358, 568}});
    article->setText(sandbox::seed::kNormalArticleTitle);
    content->addSubview(article);
    window->setRootViewController(host);
    host->view()->addSubview(content);
    window->makeKeyAndVisible();
  }

  std::shared_ptr<UIWindow> window;
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<UIView> content;
};

// The paywall's root view and card shown, the splash hidden, the title filled in.
inline bool CardVisible(const PaywallVC& paywall) {
  const auto view = paywall.viewIfLoaded();
  if (!view || view->isHidden()) return false;
  if (paywall.unlockView->isHidden() || !paywall.splashView->isHidden()) return false;
  const auto title = paywall.lblObTitle->text();
  return title.has_value() && !title->empty();
}

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_HOST_SCREEN_H_
