#include "sandbox/api_service.h"

#include <utility>

#include "sandbox/request_body.h"
#include "sandbox/text_case.h"

namespace obolo::sandbox {
namespace {

Answer Refusal(const ApiError& error) {
  return Answer::FromJson(error.status, ErrorEnvelope(error.status, error.message));
}

// Reads the create-bid members; logged-in bids also read the access key and
// the customer id.
BidRequest ReadBidRequest(RequestBody& body, bool logged_in) {
  BidRequest request;
  request.articleUrl = body.text("articleUrl");
  request.category = body.text("category");
  request.publisherDomain = body.text("publisherDomain");
  request.publisherCustomerId = body.text("publisherCustomerId");
  request.ipAddress = body.text("ipAddress");
  request.userAgent = body.text("userAgent");
  request.isSIMEnabled = body.boolean("isSIMEnabled");
  body.boolean("isCustomerLoggedIn");
  body.text("articleIdentifier");
  body.text("giftCode");
  body.text("simplifiedUrl");
  body.integer("publisherAsk");
  if (logged_in) {
    request.accessKey = body.text("accessKey");
    request.customerId = body.integer("customerId");
  }
  return request;
}

}  // namespace

std::string BearerToken(std::string_view authorization) {
  constexpr std::string_view kScheme = "bearer ";
  if (authorization.size() <= kScheme.size() ||
      !EqualsIgnoringCase(authorization.substr(0, kScheme.size()), kScheme)) {
    return {};
  }
  std::string_view token = authorization.substr(kScheme.size());
  while (!token.empty() && token.front() == ' ') token.remove_prefix(1);
  return std::string(token);
}

ApiService::ApiService(World& world, std::function<std::string()> image_url)
    : world_(world), image_url_(std::move(image_url)) {}

Answer ApiService::createLoggedOutBid(const Call& call) {
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  BidRequest request = ReadBidRequest(body.value(), /*logged_in=*/false);
  if (body.value().error()) return Refusal(*body.value().error());
  auto bid = world_.createLoggedOutBid(request);
  if (!bid.ok()) return Refusal(bid.error());
  return Answer::FromJson(200, SuccessEnvelope("Bid created", DataSetJson(bid.value())));
}

Answer ApiService::createLoggedInBid(const Call& call) {
  auto caller = world_.authenticate(BearerToken(call.authorization));
  if (!caller.ok()) return Refusal(caller.error());
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  BidRequest request = ReadBidRequest(body.value(), /*logged_in=*/true);
  if (body.value().error()) return Refusal(*body.value().error());
  auto bid = world_.createLoggedInBid(caller.value(), request);
  if (!bid.ok()) return Refusal(bid.error());
  return Answer::FromJson(200, SuccessEnvelope("Bid created", DataSetJson(bid.value())));
}

Answer ApiService::customerBid(const Call& call) {
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::string device_key = body.value().text("deviceKey");
  const std::int64_t bid_id = body.value().integer("oboloBidId");
  const std::string login_key = body.value().text("loginToken");
  if (body.value().error()) return Refusal(*body.value().error());
  auto login = world_.customerBid(device_key, bid_id, login_key);
  if (!login.ok()) return Refusal(login.error());
  Json data = DataSetJson(login.value().bid);
  data["customerInfo"] = CustomerInfoJson(login.value());
  return Answer::FromJson(200, SuccessEnvelope("Customer logged in", std::move(data)));
}

Answer ApiService::nextAccessToken(const Call& call) {
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::string device_key = body.value().text("deviceKey");
  const std::string email = body.value().text("email");
  const std::string refresh_token = body.value().text("refreshToken");
  if (body.value().error()) return Refusal(*body.value().error());
  auto refresh = world_.nextAccessToken(device_key, email, refresh_token);
  if (!refresh.ok()) return Refusal(refresh.error());
  return Answer::FromJson(
      200, SuccessEnvelopeWithStatus("Access token refreshed", RefreshedCustomerInfoJson(refresh.value())));
}

Answer ApiService::acceptBid(const Call& call) {
  auto caller = world_.authenticate(BearerToken(call.authorization));
  if (!caller.ok()) return Refusal(caller.error());
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::int64_t bid_id = body.value().integer("oboloBidId");
  const std::string mode = body.value().text("oboloTransactionMode");
  if (body.value().error()) return Refusal(*body.value().error());
  auto bid = world_.acceptBid(caller.value(), bid_id, mode);
  if (!bid.ok()) return Refusal(bid.error());
  return Answer::FromJson(200, SuccessEnvelope("Bid accepted", DataSetJson(bid.value())));
}

Answer ApiService::balanceAndArticles(const Call& call) {
  auto caller = world_.authenticate(BearerToken(call.authorization));
  if (!caller.ok()) return Refusal(caller.error());
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::int64_t customer_id = body.value().integer("customerId");
  const std::int64_t publisher_id = body.value().integer("publisherId");
  body.value().integer("oboloBidId");
  if (body.value().error()) return Refusal(*body.value().error());
  auto balance = world_.balanceAndRecommendations(caller.value(), customer_id, publisher_id);
  if (!balance.ok()) return Refusal(balance.error());
  return Answer::FromJson(200, SuccessEnvelopeWithStatus("Balance and recommendations",
                                                         BalanceDataJson(balance.value(), image_url_())));
}

Answer ApiService::logoutDevice(const Call& call) {
  auto caller = world_.authenticate(BearerToken(call.authorization));
  if (!caller.ok()) return Refusal(caller.error());
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::string device_key = body.value().text("deviceKey");
  const std::string email = body.value().text("email");
  if (body.value().error()) return Refusal(*body.value().error());
  auto logout = world_.logoutDevice(caller.value(), device_key, email);
  if (!logout.ok()) return Refusal(logout.error());
  return Answer::FromJson(200, SuccessEnvelopeWithStatus("Device logged out", true));
}

}  // namespace obolo::sandbox
