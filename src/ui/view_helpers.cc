#include "ui/view_helpers.h"

#include "platform/log.h"
#include "platform/main_loop.h"
#include "platform/number_format.h"

namespace obolo {

void addShadow(UIView& view) {
  CALayer& layer = view.layer();
  layer.setShadowColor(UIColor::lightGray());
  layer.setShadowOpacity(1.0f);
  layer.setShadowOffset(CGSize{0, 0});
  layer.setShadowRadius(5.0);
  layer.setCornerRadius(40.0);
}

void show(UIView& view) { view.setHidden(false); }

void hide(UIView& view) { view.setHidden(true); }

void show(const std::shared_ptr<UIView>& view, std::int64_t seconds) {
  if (!view) return;
  view->setHidden(false);
  MainLoop::main().scheduleTimer(static_cast<double>(seconds), [view](Timer& timer) {
    LogLine(ShortestDecimal(timer.timeInterval()));
    view->setHidden(true);
  });
}

}  // namespace obolo
