// The kit's storyboard "Obolo": its screens and the segue between them.
//
//   "PaywallVCID"          the paywall (PaywallVC)
//   "WebLoginVCID"         the web login screen (WebLoginVC)
//   "LogoutControllerID"   the wallet screen (LogoutController)
//   segue "PaywallToWebLogin": paywall → web login, presented full screen

#ifndef OBOLO_ENTRY_OBOLO_STORYBOARD_H_
#define OBOLO_ENTRY_OBOLO_STORYBOARD_H_

#include "toolkit/ui_storyboard.h"

namespace obolo {

inline constexpr char kOboloStoryboardName[] = "Obolo";
inline constexpr char kPaywallSceneIdentifier[] = "PaywallVCID";
inline constexpr char kWebLoginSceneIdentifier[] = "WebLoginVCID";
inline constexpr char kLogoutSceneIdentifier[] = "LogoutControllerID";
inline constexpr char kPaywallToWebLoginSegue[] = "PaywallToWebLogin";

// Opens the storyboard "Obolo" in the kit's bundle (the main bundle when the
// kit's is absent), registering it on first use.
UIStoryboard OboloStoryboard();

}  // namespace obolo

#endif  // OBOLO_ENTRY_OBOLO_STORYBOARD_H_
