#include "wallet/floating_button.h"

#include <any>
#include <cmath>
#include <limits>

#include "entry/kit_bundle.h"
#include "entry/obolo_storyboard.h"
#include "entry/paywall_reporter.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_image.h"
#include "toolkit/ui_pan_gesture_recognizer.h"
#include "toolkit/ui_screen.h"
#include "wallet/logout_controller.h"

namespace obolo {
namespace {

// The key of the association; only its address matters.
constexpr char kFloatingButtonKey = 0;

constexpr CGFloat kButtonSize = 40;
// How far off the screen's bottom-right corner the button is created; the first
// snap brings it in before it is shown.
constexpr CGFloat kStartOffset = 15;
constexpr UIColor kButtonBlue{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1.0};
constexpr double kSnapAnimationDuration = 0.3;
constexpr CGFloat kIconInset = 9;

std::shared_ptr<UIViewController> Owned(UIViewController& controller) {
  return std::dynamic_pointer_cast<UIViewController>(controller.weak_from_this().lock());
}

void SnapButtonToSocket(UIViewController& controller) {
  auto button = floatingButton(controller);
  if (!button) return;
  const CGPoint center = button->center();
  double best = std::numeric_limits<double>::infinity();
  CGPoint bestPoint{0, 0};
  for (const CGPoint& socket : FloatingButtonSockets(controller)) {
    const double distance = std::hypot(center.x - socket.x, center.y - socket.y);
    if (distance < best) {  // strictly: a tie keeps the socket listed first
      best = distance;
      bestPoint = socket;
    }
  }
  button->setCenter(bestPoint);
}

// Touch-up-inside on the button: opens the wallet screen over the controller.
void OnTap(UIViewController& controller) {
  LogLine("tapped");
  auto wallet = OboloStoryboard().instantiateViewController(kLogoutSceneIdentifier);
  if (!wallet) return;
  wallet->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
  // The wallet reports to the observers of the paywall that added the button;
  // it needs them before its view loads and the balance call goes out, and
  // they hear of the opening before they can hear of that call.
  const PaywallReporter reporter = AttachedReporter(controller);
  if (auto screen = std::dynamic_pointer_cast<LogoutController>(wallet)) screen->reporter = reporter;
  if (reporter.listening()) reporter.report({.kind = PaywallEventKind::walletOpened});
  controller.present(wallet, /*animated=*/true);
}

// The pan recogniser's action: each call moves the button by the movement
// since the last one; letting go glides it to a socket.
void PanDidFire(UIViewController& controller, const std::any& sender) {
  auto button = floatingButton(controller);
  if (!button) return;
  const auto* recognizer = std::any_cast<std::shared_ptr<UIGestureRecognizer>>(&sender);
  auto panner = recognizer ? std::dynamic_pointer_cast<UIPanGestureRecognizer>(*recognizer) : nullptr;
  if (!panner) return;

  auto view = controller.view();
  const CGPoint translation = panner->translation(view);
  panner->setTranslation(CGPoint{0, 0}, view);
  const CGPoint center = button->center();
  button->setCenter(CGPoint{center.x + translation.x, center.y + translation.y});

  const auto state = panner->state();
  if (state == UIGestureRecognizerState::ended || state == UIGestureRecognizerState::cancelled) {
    UIView::animate(kSnapAnimationDuration, [&controller] { SnapButtonToSocket(controller); });
  }
}

}  // namespace

std::shared_ptr<UIButton> floatingButton(const UIViewController& controller) {
  return controller.associatedObject<UIButton>(&kFloatingButtonKey);
}

void addFloatingButton(UIViewController& controller, std::int64_t after) {
  auto owner = Owned(controller);
  if (!owner) {
    LogLine("A floating button needs a view controller owned by a shared_ptr");
    return;
  }

  const CGRect screen = UIScreen::main().bounds();
  auto button = std::make_shared<UIButton>(
      CGRect(screen.width() - kStartOffset, screen.height() - kStartOffset, kButtonSize, kButtonSize));
  button->setImage(UIImage::named("wallet-icon", KitResourceBundle()), UIControlState::normal);
  button->setBackgroundColor(kButtonBlue);
  button->setTitleColor(UIColor::white(), UIControlState::normal);
  CALayer& layer = button->layer();
  layer.setShadowColor(UIColor::black());
  layer.setShadowRadius(5.0);
  layer.setShadowOpacity(0.12f);
  layer.setShadowOffset(CGSize{0, 1});
  layer.setCornerRadius(kButtonSize / 2);
  // The wallet icon sits within the circle.
  button->setContentEdgeInsets({kIconInset, kIconInset, kIconInset, kIconInset});
  button->addTarget(owner, &OnTap, UIControlEvent::touchUpInside);
  button->setAutoresizingMask(UIViewAutoresizing::none);

  // An earlier button is only let go of here; wherever it is shown, it stays.
  controller.setAssociatedObject(&kFloatingButtonKey, button);

  MainLoop::main().scheduleTimer(static_cast<double>(after), [owner](Timer&) {
    if (auto current = floatingButton(*owner)) owner->view()->addSubview(current);
  });

  button->addGestureRecognizer(std::make_shared<UIPanGestureRecognizer>(owner, &PanDidFire));
  SnapButtonToSocket(controller);
}

void removeFloatingButton(UIViewController& controller) {
  if (auto button = floatingButton(controller)) button->removeFromSuperview();
}

std::array<CGPoint, 6> FloatingButtonSockets(UIViewController& controller) {
  CGSize size{0, 0};
  if (auto button = floatingButton(controller)) size = button->bounds().size;
  const CGRect r = controller.view()->bounds().insetBy(4 + size.width / 2, 4 + size.height / 2);
  return {{
      {r.minX() + 15, r.minY() + 50},
      {r.minX() + 15, r.maxY() - 50},
      {r.maxX() - 15, r.minY() + 50},
      {r.minX() + 15, r.maxY() / 2},
      {r.maxX() - 15, r.maxY() / 2},
      {r.maxX() - 15, r.maxY() - 50},
  }};
}

}  // namespace obolo
