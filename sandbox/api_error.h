// How an operation of the sandbox's service refuses a request: the HTTP status
// and the message that go into the error envelope. Results are values; nothing
// in the sandbox reports a refusal by throwing.

#ifndef OBOLO_SANDBOX_API_ERROR_H_
#define OBOLO_SANDBOX_API_ERROR_H_

#include <string>
#include <utility>
#include <variant>

namespace obolo::sandbox {

struct ApiError {
  int status = 400;
  std::string message;
};

// Either a value or the refusal that replaced it.
template <typename T>
class Outcome {
 public:
  Outcome(T value) : state_(std::move(value)) {}         // NOLINT: implicit by design
  Outcome(ApiError error) : state_(std::move(error)) {}  // NOLINT: implicit by design

  bool ok() const { return std::holds_alternative<T>(state_); }
  // REQUIRES: ok().
  const T& value() const { return std::get<T>(state_); }
  T& value() { return std::get<T>(state_); }
  // REQUIRES: !ok().
  const ApiError& error() const { return std::get<ApiError>(state_); }

 private:
  std::variant<T, ApiError> state_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_API_ERROR_H_
