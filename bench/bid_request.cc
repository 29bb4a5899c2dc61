#include "bench/bid_request.h"

#include "bench/bench_environment.h"
#include "entry/constants.h"
#include "network/api.h"
#include "sandbox/default_world.h"

namespace obolo::bench {

CreateLoggedBidParam LoggedOutBidParam() {
  CreateLoggedBidParam param;
  param.category = sandbox::seed::kCategory;
  param.articleUrl = sandbox::seed::kNormalArticleUrl;
  param.publisherCustomerId = sandbox::seed::kPublisherCustomerId;
  param.publisherDomain = sandbox::seed::kPublisherDomain;
  param.ipAddress = std::string(IP_ADDRESS);
  param.userAgent = std::string(USER_AGENT);
  return param;
}

WireRequest LoggedOutBidWireRequest() {
  WireRequest request;
  request.url = BenchEnvironment::sandbox().baseUrl() + std::string(API::V2::CREATE_LOGGED_OUT_BID);
  request.body = LoggedOutBidParam().bodyMap().json();
  request.caFile = BenchEnvironment::sandbox().caFile();
  return request;
}

}  // namespace obolo::bench
