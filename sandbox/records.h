// The JSON records the service answers with. Every number is written with its
// JSON type: ids and counts as integers, amounts as numbers, flags as
// booleans. A member without a value is left out.

#ifndef OBOLO_SANDBOX_RECORDS_H_
#define OBOLO_SANDBOX_RECORDS_H_

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "sandbox/world.h"

namespace obolo::sandbox {

using Json = nlohmann::ordered_json;

// DataSet: a bid as one reader sees it, with the card's texts.
Json DataSetJson(const BidView& bid);
// PaywallSettingsSet: the card's texts for the bid.
Json PaywallSettingsJson(const BidView& bid);
// CustomerSet: a customer's profile. `unlocks` counts their purchases.
Json CustomerJson(const Customer& customer, std::int64_t unlocks);
// CustomerInfoSet after a customer bid: the device's new session.
Json CustomerInfoJson(const CustomerBidView& login);
// CustomerInfoSet after a token refresh: the new access token, no refresh token.
Json RefreshedCustomerInfoJson(const RefreshView& refresh);
// BADataSet. `image_url` is the picture address given to every recommendation.
Json BalanceDataJson(const BalanceView& balance, std::string_view image_url);

// Envelopes.
Json SuccessEnvelope(std::string_view message, Json data);  // OboloData
Json SuccessEnvelopeWithStatus(std::string_view message,
                               Json data);                 // NextTokenData, BalanceAndArticleData, LogoutData
Json ErrorEnvelope(int status, std::string_view message);  // {success:false, message, statusCode}

// JSON text of a record. Invalid UTF-8 in a text is replaced, never thrown on.
std::string Dump(const Json& json);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_RECORDS_H_
