#include "entry/obolo_storyboard.h"

#include "entry/kit_bundle.h"
#include "login/web_login_vc.h"
#include "paywall/paywall_vc.h"
#include "wallet/logout_controller.h"

namespace obolo {
namespace {

void RegisterOnce() {
  static const bool registered = [] {
    UIStoryboard::Definition definition;
    definition.scenes = {
        {kPaywallSceneIdentifier, [] { return std::make_shared<PaywallVC>(); }},
        {kWebLoginSceneIdentifier, [] { return std::make_shared<WebLoginVC>(); }},
        {kLogoutSceneIdentifier, [] { return std::make_shared<LogoutController>(); }},
    };
    // Full screen: the login page needs the whole screen, and the paywall
    // underneath must not be dismissed by a swipe while a login is under way.
    definition.segues = {{kPaywallSceneIdentifier, kPaywallToWebLoginSegue, kWebLoginSceneIdentifier,
                          UIModalPresentationStyle::fullScreen}};
    definition.initialScene = kPaywallSceneIdentifier;
    UIStoryboard::registerStoryboard(kOboloStoryboardName, std::move(definition));
    return true;
  }();
  (void)registered;
}

}  // namespace

UIStoryboard OboloStoryboard() {
  RegisterOnce();
  return UIStoryboard(kOboloStoryboardName, obBundle());
}

}  // namespace obolo
