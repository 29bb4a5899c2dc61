#include "wire_client.h"

namespace obolo::sandbox::testing {
namespace {

size_t Collect(char* data, size_t size, size_t count, void* out) {
  static_cast<std::string*>(out)->append(data, size * count);
  return size * count;
}

}  // namespace

WireResponse Send(const WireRequest& request) {
  static const bool initialised = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  (void)initialised;
  WireResponse response;
  CURL* easy = curl_easy_init();
  if (easy == nullptr) {
    response.code = CURLE_FAILED_INIT;
    return response;
  }
  char error[CURL_ERROR_SIZE] = {};
  curl_slist* headers = nullptr;
  for (const auto& line : request.headers) headers = curl_slist_append(headers, line.c_str());
  headers = curl_slist_append(headers, "Expect:");

  curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, error);
  curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Collect);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &response.body);
  curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L);
  if (!request.caFile.empty()) curl_easy_setopt(easy, CURLOPT_CAINFO, request.caFile.c_str());
  if (request.method == "GET") {
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
  } else {
    if (request.method != "POST") curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.c_str());
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  }

  const auto started = std::chrono::steady_clock::now();
  response.code = curl_easy_perform(easy);
  response.elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started);
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &response.status);
  char* content_type = nullptr;
  if (curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &content_type) == CURLE_OK && content_type != nullptr) {
    response.contentType = content_type;
  }
  char* location = nullptr;
  if (curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &location) == CURLE_OK && location != nullptr) {
    response.location = location;
  }
  response.error = error[0] != '\0' ? error : curl_easy_strerror(response.code);
  curl_slist_free_all(headers);
  curl_easy_cleanup(easy);
  return response;
}

WireResponse SandboxClient::call(const std::string& method, const std::string& path, const std::string& body,
                                 const std::string& bearer) const {
  WireRequest request;
  request.method = method;
  request.url = sandbox_.baseUrl() + path;
  request.headers = {"Content-Type: Application/json", "Accept: application/json"};
  if (!bearer.empty()) request.headers.push_back("Authorization: Bearer " + bearer);
  request.body = body;
  request.caFile = sandbox_.caFile();
  return Send(request);
}

WireResponse SandboxClient::get(const std::string& path) const {
  WireRequest request;
  request.method = "GET";
  request.url = sandbox_.baseUrl() + path;
  request.caFile = sandbox_.caFile();
  return Send(request);
}

}  // namespace obolo::sandbox::testing
