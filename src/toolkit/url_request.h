// A request a web view loads: address, method, cache policy and time-out, as
// the platform's URLRequest. A plain value.

#ifndef OBOLO_TOOLKIT_URL_REQUEST_H_
#define OBOLO_TOOLKIT_URL_REQUEST_H_

#include <string>
#include <utility>
#include <vector>

#include "toolkit/url.h"

namespace obolo {

class URLRequest {
 public:
  // The platform's raw values.
  enum class CachePolicy {
    useProtocolCachePolicy = 0,
    reloadIgnoringLocalCacheData = 1,
    returnCacheDataElseLoad = 2,
    returnCacheDataDontLoad = 3,
  };
  // Seconds, as on the platform.
  static constexpr double kDefaultTimeoutInterval = 60.0;

  // A GET of `url` with no headers and no body.
  explicit URLRequest(URL url, CachePolicy cache_policy = CachePolicy::useProtocolCachePolicy,
                      double timeout_interval = kDefaultTimeoutInterval)
      : url_(std::move(url)), cache_policy_(cache_policy), timeout_interval_(timeout_interval) {}

  // What the request asks for: address, method, cache policy, time allowed (seconds),
  // header fields in the order set (setValue adds one), body.
  const URL& url() const { return url_; }
  const std::string& httpMethod() const { return http_method_; }
  void setHttpMethod(std::string method) { http_method_ = std::move(method); }
  CachePolicy cachePolicy() const { return cache_policy_; }
  double timeoutInterval() const { return timeout_interval_; }
  const std::vector<std::pair<std::string, std::string>>& allHTTPHeaderFields() const { return headers_; }
  void setValue(std::string value, std::string field) {
    headers_.emplace_back(std::move(field), std::move(value));
  }
  const std::string& httpBody() const { return body_; }
  void setHttpBody(std::string body) { body_ = std::move(body); }

 private:
  URL url_;
  std::string http_method_ = "GET";
  CachePolicy cache_policy_;
  double timeout_interval_;
  std::vector<std::pair<std::string, std::string>> headers_;
  std::string body_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_URL_REQUEST_H_
