// Reads a request's JSON body member by member, the way the service checks
// what a client sent: a member that is absent or null reads as the empty
// text, 0 or false; a member of the wrong JSON type is an error that names it.

#ifndef OBOLO_SANDBOX_REQUEST_BODY_H_
#define OBOLO_SANDBOX_REQUEST_BODY_H_

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "sandbox/api_error.h"

namespace obolo::sandbox {

class RequestBody {
 public:
  // A body that is not a JSON object (malformed text, an array, nothing at
  // all) is an HTTP 400 error.
  static Outcome<RequestBody> Parse(std::string_view text);

  std::string text(std::string_view key);
  std::int64_t integer(std::string_view key);
  bool boolean(std::string_view key);

  // The first member that had the wrong type, as an HTTP 400 error; nullptr
  // while every member read so far had its type.
  const ApiError* error() const { return failed_ ? &error_ : nullptr; }

 private:
  explicit RequestBody(nlohmann::json object) : object_(std::move(object)) {}
  // The member's value, or nullptr when it is absent or null.
  const nlohmann::json* find(std::string_view key) const;
  void fail(std::string_view key, const char* expected);

  nlohmann::json object_;
  bool failed_ = false;
  ApiError error_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_REQUEST_BODY_H_
