// Faults a test can make a sandbox route answer with, in place of (or, for a
// slow answer, before) its normal answer. A fault never changes the sandbox's
// state: a replaced answer skips the route's work entirely, and a slow answer
// does the normal work after its delay.

#ifndef OBOLO_SANDBOX_FAULT_H_
#define OBOLO_SANDBOX_FAULT_H_

#include <chrono>
#include <string>
#include <utility>

namespace obolo::sandbox {

enum class FaultKind {
  kServerError,            // HTTP 500 with the body {}
  kHtmlErrorPage,          // HTTP 502, a text/html error page
  kMalformedJson,          // HTTP 200, a JSON body cut off half-way
  kWrongType,              // HTTP 200, the route's envelope with one member of the wrong JSON type
  kFailureWithMessage,     // HTTP 200, {"success":false,"message":...}
  kFailureWithoutMessage,  // HTTP 200, {"success":false}
  kEmptyBody,              // HTTP 200 with zero bytes of body
  kCloseWithoutResponse,   // the connection is closed before any byte of a response
  kSlowAnswer,             // the normal answer, after `delay`
  kCustomAnswer,           // `status`, `contentType`, `body` and `location` exactly as given
};

struct Fault {
  // Applies to every request until the fault is cleared.
  static constexpr int kUntilCleared = -1;

  FaultKind kind = FaultKind::kServerError;
  // How many of the route's next requests it applies to, or kUntilCleared.
  int times = 1;
  // kSlowAnswer: how long the answer is held back. A sandbox that stops
  // meanwhile answers at once.
  std::chrono::milliseconds delay{0};
  // kFailureWithMessage: the message; a stock text when empty.
  std::string message;
  // kCustomAnswer only.
  int status = 200;
  std::string contentType = "application/json";
  std::string body;
  // kCustomAnswer: a Location header field when not empty (a redirect).
  std::string location;

  static Fault Once(FaultKind kind) { return Times(kind, 1); }
  static Fault Always(FaultKind kind) { return Times(kind, kUntilCleared); }
  static Fault Times(FaultKind kind, int times) {
    Fault fault;
    fault.kind = kind;
    fault.times = times;
    return fault;
  }
  static Fault Slow(std::chrono::milliseconds delay, int times = 1) {
    Fault fault = Times(FaultKind::kSlowAnswer, times);
    fault.delay = delay;
    return fault;
  }
  static Fault Custom(int status, std::string body, int times = 1) {
    Fault fault = Times(FaultKind::kCustomAnswer, times);
    fault.status = status;
    fault.body = std::move(body);
    return fault;
  }
  // A 3xx answer pointing at `location`, with `body` (a JSON object unless
  // `contentType` says otherwise).
  static Fault Redirect(int status, std::string location, std::string body, int times = 1) {
    Fault fault = Custom(status, std::move(body), times);
    fault.location = std::move(location);
    return fault;
  }
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_FAULT_H_
