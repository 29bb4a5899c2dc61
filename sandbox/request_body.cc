#include "sandbox/request_body.h"

#include <utility>

namespace obolo::sandbox {

Outcome<RequestBody> RequestBody::Parse(std::string_view text) {
  auto parsed = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (parsed.is_discarded()) return ApiError{400, "Malformed JSON body"};
  if (!parsed.is_object()) return ApiError{400, "The body must be a JSON object"};
  return RequestBody(std::move(parsed));
}

const nlohmann::json* RequestBody::find(std::string_view key) const {
  auto it = object_.find(key);
  if (it == object_.end() || it->is_null()) return nullptr;
  return &*it;
}

void RequestBody::fail(std::string_view key, const char* expected) {
  if (failed_) return;
  failed_ = true;
  error_ = ApiError{400, std::string(key) + " must be " + expected};
}

std::string RequestBody::text(std::string_view key) {
  const nlohmann::json* value = find(key);
  if (value == nullptr) return {};
  if (!value->is_string()) {
    fail(key, "a string");
    return {};
  }
  return value->get<std::string>();
}

std::int64_t RequestBody::integer(std::string_view key) {
  const nlohmann::json* value = find(key);
  if (value == nullptr) return 0;
  if (!value->is_number_integer() ||
      (value->is_number_unsigned() && value->get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX))) {
    fail(key, "an integer");
    return 0;
  }
  return value->get<std::int64_t>();
}

bool RequestBody::boolean(std::string_view key) {
  const nlohmann::json* value = find(key);
  if (value == nullptr) return false;
  if (!value->is_boolean()) {
    fail(key, "a boolean");
    return false;
  }
  return value->get<bool>();
}

}  // namespace obolo::sandbox
