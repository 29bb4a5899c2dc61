#include "bench/bare_client.h"

#include <curl/curl.h>

#include <utility>

namespace obolo::bench {
namespace {

size_t Append(char* data, size_t size, size_t count, void* out) {
  static_cast<std::string*>(out)->append(data, size * count);
  return size * count;
}

}  // namespace

BareClient::BareClient(WireRequest request) : request_(std::move(request)) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  easy_ = curl_easy_init();
  // The kit's fields for a create bid, in its order; "Expect:" keeps libcurl
  // from adding its own, as the kit does.
  headers_ = curl_slist_append(headers_, "Content-Type: application/json");
  headers_ = curl_slist_append(headers_, "Accept: application/json");
  headers_ = curl_slist_append(headers_, "Expect:");
  curl_easy_setopt(easy_, CURLOPT_URL, request_.url.c_str());
  curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy_, CURLOPT_TIMEOUT_MS, 60'000L);
  curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headers_);
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, request_.body.data());
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &Append);
  // The same trust as the kit's: the sandbox's certificate and nothing else.
  if (!request_.caFile.empty()) {
    curl_easy_setopt(easy_, CURLOPT_CAINFO, request_.caFile.c_str());
    curl_easy_setopt(easy_, CURLOPT_CAPATH, nullptr);
  }
}

BareClient::~BareClient() {
  curl_easy_cleanup(easy_);
  curl_slist_free_all(headers_);
}

long BareClient::roundTrip(std::string& body) {
  body.clear();
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, &body);
  if (curl_easy_perform(easy_) != CURLE_OK) return 0;
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  long opened = 0;
  curl_easy_getinfo(easy_, CURLINFO_NUM_CONNECTS, &opened);
  connections_ += opened;
  return status;
}

}  // namespace obolo::bench
