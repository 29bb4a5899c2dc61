#include "paywall/card_content.h"

namespace obolo {

CardContent CardContentFor(const PaywallSettingsSet& settings) {
  CardContent content;
  if (settings.showMobileImage.has_value()) {
    content.banner = *settings.showMobileImage ? BannerLayout{"background", 20, 174} : BannerLayout{std::nullopt, 0, 0};
  }
  content.title = settings.obTitleText;
  content.price = settings.obCustomerPrice;
  content.prompt = settings.obPromptText.value_or("");
  content.unlockButtonTitle = settings.obButtonText;
  const std::string balanceText = settings.obBalanceText.value_or("");
  content.agreementHidden = balanceText.empty();
  if (!content.agreementHidden) content.agreementTitle = balanceText;
  content.agreementBottom = balanceText.empty() ? 0 : 20;
  content.splashMessage = settings.obAutoUnlockText;
  return content;
}

UnlockButtonLayout UnlockButtonLayoutFor(bool hidden) {
  return hidden ? UnlockButtonLayout{true, 0, 0} : UnlockButtonLayout{false, 45, 5};
}

Placement PlacementFor(Position position) {
  switch (position) {
    case Position::top:
      return {.cardTop = true, .splashTop = true};
    case Position::bottom:
      return {.cardBottom = true, .splashBottom = true};
    case Position::center:
      break;
  }
  return {.cardVertical = true, .splashTop = true, .splashVertical = true};
}

}  // namespace obolo
