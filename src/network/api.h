// Where the paywall service lives and the paths of its seven calls.
//
// A request's address is the plain concatenation of BASE_URL() and a path.

#ifndef OBOLO_NETWORK_API_H_
#define OBOLO_NETWORK_API_H_

#include <string>
#include <string_view>

namespace obolo::API {

// The service's production origin, "https://api.obolo.io", without a trailing
// slash. OBOLO_API_BASE_URL, read once at first use, points the kit at another
// service (the sandbox, a staging service); nothing else about the calls
// changes.
const std::string& BASE_URL();

namespace V2 {
inline constexpr std::string_view CREATE_LOGGED_OUT_BID = "/v2/obid/createLoggedOutBid";
inline constexpr std::string_view CREATE_LOGGED_IN_BID = "/v2/obid/createLoggedInBid";
inline constexpr std::string_view CUSTOMER_BID = "/v2/obid/customerBid";
inline constexpr std::string_view ACCEPT_BID = "/v2/obid/acceptBid";
inline constexpr std::string_view BALANCE_ARTICLE = "/v2/obid/getBalanceAndArticleRecommendation";
}  // namespace V2

namespace V1 {
inline constexpr std::string_view NEXT_ACCESS_TOKEN = "/v1/customer/nextAccessToken";
inline constexpr std::string_view LOGOUT = "/v1/customer/logout/device";
}  // namespace V1

}  // namespace obolo::API

#endif  // OBOLO_NETWORK_API_H_
