// The paths the sandbox serves, appended to its base address.

#ifndef OBOLO_SANDBOX_PATHS_H_
#define OBOLO_SANDBOX_PATHS_H_

namespace obolo::sandbox {

// The service's API, as the kit calls it.
inline constexpr char kCreateLoggedOutBidPath[] = "/v2/obid/createLoggedOutBid";
inline constexpr char kCreateLoggedInBidPath[] = "/v2/obid/createLoggedInBid";
inline constexpr char kCustomerBidPath[] = "/v2/obid/customerBid";
inline constexpr char kAcceptBidPath[] = "/v2/obid/acceptBid";
inline constexpr char kBalanceAndArticlePath[] = "/v2/obid/getBalanceAndArticleRecommendation";
inline constexpr char kNextAccessTokenPath[] = "/v1/customer/nextAccessToken";
inline constexpr char kLogoutDevicePath[] = "/v1/customer/logout/device";

// The wallet site: the login page the kit's web login screen loads, the
// redirect page it names, the JSON calls behind the login page, and the logo.
inline constexpr char kLoginPagePath[] = "/";
inline constexpr char kWindowModePath[] = "/window-mode/index.html";
inline constexpr char kLoginCodePath[] = "/sandbox/login/code";
inline constexpr char kLoginVerifyPath[] = "/sandbox/login/verify";
inline constexpr char kPublisherLogoPath[] = "/assets/publisher-logo.png";
// The same logo in the other formats publishers' logos come in.
inline constexpr char kPublisherLogoJpegPath[] = "/assets/publisher-logo.jpg";
inline constexpr char kPublisherLogoWebpPath[] = "/assets/publisher-logo.webp";
inline constexpr char kPublisherLogoGifPath[] = "/assets/publisher-logo.gif";

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_PATHS_H_
