#include "demo/login_page_client.h"

#include <curl/curl.h>

#include <memory>
#include <nlohmann/json.hpp>

namespace obolo::demo {
namespace {

size_t Append(char* data, size_t size, size_t count, void* out) {
  static_cast<std::string*>(out)->append(data, size * count);
  return size * count;
}

// POSTs `body` as JSON; the answer's JSON, or none.
std::optional<nlohmann::json> PostJson(const std::string& url, const std::string& caFile, const nlohmann::json& body,
                                       std::string& error) {
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  if (!curl) {
    error = "cannot make an HTTP request";
    return std::nullopt;
  }
  const std::string text = body.dump();
  std::string answer;
  curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, text.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, &Append);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 15L);
  if (!caFile.empty()) curl_easy_setopt(curl.get(), CURLOPT_CAINFO, caFile.c_str());
  const CURLcode code = curl_easy_perform(curl.get());
  curl_slist_free_all(headers);
  if (code != CURLE_OK) {
    error = curl_easy_strerror(code);
    return std::nullopt;
  }
  auto json = nlohmann::json::parse(answer, nullptr, false);
  if (json.is_discarded() || !json.is_object()) {
    error = url + " does not answer like a login page's service";
    return std::nullopt;
  }
  return json;
}

std::string Text(const nlohmann::json& object, const char* key) {
  auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get<std::string>() : "";
}

}  // namespace

std::optional<PageKeys> LogInOnPage(const std::string& origin, const std::string& caFile, const std::string& email,
                                    std::string& error) {
  const auto code = PostJson(origin + "/sandbox/login/code", caFile, {{"email", email}}, error);
  if (!code) return std::nullopt;
  if (Text(*code, "code").empty()) {
    error = "no one-time code: " + Text(*code, "message");
    return std::nullopt;
  }
  const auto keys =
      PostJson(origin + "/sandbox/login/verify", caFile, {{"email", email}, {"code", Text(*code, "code")}}, error);
  if (!keys) return std::nullopt;
  PageKeys page{Text(*keys, "deviceKey"), Text(*keys, "loginKey")};
  if (page.deviceKey.empty() || page.loginKey.empty()) {
    error = "the code was refused: " + Text(*keys, "message");
    return std::nullopt;
  }
  return page;
}

}  // namespace obolo::demo
