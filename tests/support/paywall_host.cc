#include "support/paywall_host.h"

#include "entry/obolo.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "support/sandbox_environment.h"
#include "toolkit/ui_window_scene.h"
#include "wallet/floating_button.h"

namespace obolo::testing {

PaywallHost::PaywallHost(std::string articleUrl)
    : window(std::make_shared<UIWindow>(std::make_shared<UIWindowScene>())),
      host(std::make_shared<UIViewController>()),
      content(std::make_shared<UIView>(CGRect{{0, 100}, {390, 600}})),
      articleUrl(std::move(articleUrl)) {
  MainLoop::main().useVirtualTime();
  auto article = std::make_shared<UILabel>(CGRect{{16, 16}, {358, 568}});
  article->setText("The city council approved next year's budget after a debate that ran past midnight.");
  content->addSubview(article);
  window->setRootViewController(host);
  host->view()->addSubview(content);
  window->makeKeyAndVisible();
}

PaywallHost::~PaywallHost() {
  // Lets pending answers and timers finish so no test leaves work behind.
  MainLoop::main().runFor(std::chrono::milliseconds(1));
}

std::shared_ptr<PaywallVC> PaywallHost::load(Position position) {
  Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, SandboxEnvironment::sandbox().logoUrl(),
              articleUrl, sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
  obolo.loadPaywall(host, content, position);
  return std::dynamic_pointer_cast<PaywallVC>(host->children().back());
}

std::shared_ptr<PaywallVC> PaywallHost::loadFullScreen() {
  Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, SandboxEnvironment::sandbox().logoUrl(),
              articleUrl, sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
  obolo.loadPaywall(host);
  return std::dynamic_pointer_cast<PaywallVC>(host->children().back());
}

bool PaywallHost::waitFor(const std::function<bool()>& done, std::chrono::seconds timeout) {
  return MainLoop::main().runUntil(done, timeout);
}

void PaywallHost::advance(std::chrono::duration<double> duration) { MainLoop::main().advance(duration); }

bool PaywallHost::isHidden(const PaywallVC& paywall) {
  const auto view = paywall.viewIfLoaded();
  return !view || view->isHidden();
}

bool PaywallHost::isCardShown(const PaywallVC& paywall) {
  return !isHidden(paywall) && !paywall.unlockView->isHidden() && paywall.splashView->isHidden();
}

bool PaywallHost::hasFloatingButtonOnScreen() const {
  auto button = floatingButton(*host);
  return button && button->superview() == host->view();
}

}  // namespace obolo::testing
