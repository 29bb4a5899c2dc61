#include "platform/http_session.h"
#include "platform/no_destructor.h"

#include <algorithm>
#include <cctype>
#include <mutex>

#include "platform/curl_http_session.h"

namespace obolo {
namespace {

bool SameFieldName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::mutex& SharedMutex() {
  static NoDestructor<std::mutex> mutex;
  return *mutex;
}

std::shared_ptr<HttpSession>& Installed() {
  static NoDestructor<std::shared_ptr<HttpSession>> session;
  return *session;
}

}  // namespace

void HttpRequest::setValue(std::string_view value, std::string_view field) {
  std::erase_if(headers, [&](const auto& header) { return SameFieldName(header.first, field); });
  headers.emplace_back(std::string(field), std::string(value));
}

void HttpRequest::addValue(std::string_view value, std::string_view field) {
  for (auto& header : headers) {
    if (SameFieldName(header.first, field)) {
      header.second.append(",").append(value);
      return;
    }
  }
  headers.emplace_back(std::string(field), std::string(value));
}

std::optional<std::string> HttpRequest::value(std::string_view field) const {
  for (const auto& header : headers) {
    if (SameFieldName(header.first, field)) return header.second;
  }
  return std::nullopt;
}

bool IsSendableHeaderField(std::string_view name, std::string_view value) {
  constexpr std::string_view kLineBreaking("\r\n\0", 3);
  return name.find_first_of(kLineBreaking) == std::string_view::npos &&
         value.find_first_of(kLineBreaking) == std::string_view::npos;
}

std::shared_ptr<HttpSession> HttpSession::shared() {
  std::lock_guard<std::mutex> lock(SharedMutex());
  auto& session = Installed();
  if (!session) session = std::make_shared<CurlHttpSession>();
  return session;
}

std::shared_ptr<HttpSession> HttpSession::setShared(std::shared_ptr<HttpSession> session) {
  std::lock_guard<std::mutex> lock(SharedMutex());
  // The caller releases the previous session, outside the lock: a libcurl
  // session joins its thread when the last reference goes.
  return std::exchange(Installed(), std::move(session));
}

}  // namespace obolo
