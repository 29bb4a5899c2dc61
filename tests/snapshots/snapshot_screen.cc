#include "snapshot_screen.h"

#include "entry/obolo.h"
#include "platform/main_loop.h"
#include "sandbox/default_world.h"
#include "support/sandbox_environment.h"
#include "toolkit/render/render.h"

namespace obolo::testing {

SnapshotScreen::SnapshotScreen(std::string articleUrl, CGSize size)
    : screen(size), articleUrl(std::move(articleUrl)) {
  MainLoop::main().useVirtualTime();
}

SnapshotScreen::~SnapshotScreen() {
  // Lets pending answers and timers finish so no test leaves work behind.
  MainLoop::main().runFor(std::chrono::milliseconds(1));
}

std::shared_ptr<PaywallVC> SnapshotScreen::load(Position position) {
  Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, SandboxEnvironment::sandbox().logoUrl(),
              articleUrl, sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
  obolo.loadPaywall(screen.host, screen.content, position);
  return std::dynamic_pointer_cast<PaywallVC>(screen.host->children().back());
}

bool SnapshotScreen::waitFor(const std::function<bool()>& done, std::chrono::seconds timeout) {
  return MainLoop::main().runUntil(done, timeout);
}

bool SnapshotScreen::waitForCard(const PaywallVC& paywall) {
  return waitFor([&] {
    auto root = paywall.viewIfLoaded();
    return root && !root->isHidden() && !paywall.unlockView->isHidden() && paywall.splashView->isHidden() &&
           paywall.lblObTitle->text() && paywall.imgPublisherLogo->image() != nullptr;
  });
}

void SnapshotScreen::advance(std::chrono::duration<double> duration) { MainLoop::main().advance(duration); }

RenderedImage SnapshotScreen::render(double scale) {
  RenderOptions options;
  options.scale = scale;
  return RenderView(*screen.window, options);
}

}  // namespace obolo::testing
