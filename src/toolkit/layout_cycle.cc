#include "toolkit/layout_cycle.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/main_loop.h"
#include "toolkit/ui_view.h"

namespace obolo {
namespace {

struct Pending {
  std::vector<std::weak_ptr<UIView>> views;
  bool observing = false;
};

Pending& State() {
  static Pending* const pending = new Pending();  // main thread only; used until exit
  return *pending;
}

}  // namespace

void LayoutCycle::schedule(UIView& view) {
  if (view.layout_scheduled_) return;
  auto owned = std::dynamic_pointer_cast<UIView>(view.weak_from_this().lock());
  if (!owned) return;
  Pending& pending = State();
  if (!pending.observing) {
    pending.observing = true;
    MainLoop::main().addEndOfTurnObserver([] { LayoutCycle::flush(); });
  }
  view.layout_scheduled_ = true;
  pending.views.push_back(owned);
}

void LayoutCycle::flush() {
  Pending& pending = State();
  if (pending.views.empty()) return;
  const auto views = std::move(pending.views);
  pending.views.clear();
  std::vector<std::shared_ptr<UIView>> roots;
  for (const auto& weak : views) {
    auto view = weak.lock();
    if (!view) continue;
    view->layout_scheduled_ = false;
    auto root = view->layoutRoot();
    if (std::find(roots.begin(), roots.end(), root) == roots.end()) roots.push_back(std::move(root));
  }
  for (const auto& root : roots) root->layoutIfNeeded();
}

}  // namespace obolo
