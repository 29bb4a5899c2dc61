// What the paywall card shows for a settings record, its unlock button's
// layout and its placement, worked out without any view. The card's views
// apply these values as they are.

#ifndef OBOLO_PAYWALL_CARD_CONTENT_H_
#define OBOLO_PAYWALL_CARD_CONTENT_H_

#include <optional>
#include <string>

#include "entry/position.h"
#include "network/response_records.h"

namespace obolo {

// All constants are in points.
struct BannerLayout {
  std::optional<std::string> imageName;  // none: an empty image
  double topMargin = 0;
  double height = 0;

  friend bool operator==(const BannerLayout&, const BannerLayout&) = default;
};

struct CardContent {
  // None when the settings do not say whether to show the banner: the banner
  // and its constants stay as they are.
  std::optional<BannerLayout> banner;
  std::optional<std::string> title;
  std::optional<std::string> price;   // shown as the service formatted it
  std::string prompt;                 // through the label's funds hint
  std::optional<std::string> unlockButtonTitle;
  bool agreementHidden = true;
  std::optional<std::string> agreementTitle;
  double agreementBottom = 0;
  std::optional<std::string> splashMessage;

  friend bool operator==(const CardContent&, const CardContent&) = default;
};

// The card's texts from the service's settings. Absent texts leave their label
// or title empty. The consent checkbox shows only with a non-empty balance
// text; a record without one is treated like an empty one, since a checkbox
// with no words beside it would ask the reader to agree to nothing.
CardContent CardContentFor(const PaywallSettingsSet& settings);

struct UnlockButtonLayout {
  bool hidden = false;
  double height = 45;
  double bottomMargin = 5;

  friend bool operator==(const UnlockButtonLayout&, const UnlockButtonLayout&) = default;
};

// A hidden button takes no room: height and margin 0; otherwise 45 and 5.
UnlockButtonLayout UnlockButtonLayoutFor(bool hidden);

// Which of the six placement constraints are active.
struct Placement {
  bool cardTop = false;
  bool cardBottom = false;
  bool cardVertical = false;
  bool splashTop = false;
  bool splashBottom = false;
  bool splashVertical = false;

  friend bool operator==(const Placement&, const Placement&) = default;
};

// top pins card and splash to the top, bottom to the bottom; center centres the
// card and keeps the splash panel's top and vertical constraints both active
// (its top constraint yields by priority).
Placement PlacementFor(Position position);

}  // namespace obolo

#endif  // OBOLO_PAYWALL_CARD_CONTENT_H_
