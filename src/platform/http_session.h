// The HTTP session every network transfer of the kit goes through.
//
// One session serves the whole process, like a phone platform's shared URL
// session: the API client and the remote-image helper both use `shared()`.
// Transfers run concurrently, and their completion handlers run on the
// session's own thread, never on the main loop; a caller that touches views
// hops to the main loop itself.
//
// A transport failure and the HTTP status are kept apart: a response that
// arrived carries its status and body whatever the status is; a transfer that
// failed carries a TransportError and no body.

#ifndef OBOLO_PLATFORM_HTTP_SESSION_H_
#define OBOLO_PLATFORM_HTTP_SESSION_H_

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace obolo {

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

// One request. Header names and values go on the wire exactly as given (case
// included), in the order they were set.
struct HttpRequest {
  std::string method = "GET";
  std::string url;
  HttpHeaders headers;
  std::string body;
  // Time allowed for the whole transfer.
  std::chrono::milliseconds timeout{60'000};

  // Sets a header field, replacing any field of the same name (names compare
  // without regard to case, as HTTP does).
  void setValue(std::string_view value, std::string_view field);
  // Adds a value to a header field; a field already present gets ",value".
  void addValue(std::string_view value, std::string_view field);
  // The value of a field, none when it is not set.
  std::optional<std::string> value(std::string_view field) const;
};

enum class TransportError {
  kNone,
  kInvalidUrl,
  kCannotResolveHost,
  kCannotConnect,
  kTimedOut,
  kSecureConnectionFailed,
  kConnectionLost,   // the peer closed the connection without a whole response
  kResponseTooLarge,
  kCancelled,        // the session shut down before the transfer ended
  kOther,
};

struct HttpResponse {
  int statusCode = 0;
  // The address the response came from, after any redirect.
  std::string url;
  HttpHeaders headers;
};

// What a transfer produced. `response` and `body` are present together when an
// answer arrived (an empty body is present and empty); after a transport
// failure `body` is absent and `error` says why.
struct HttpOutcome {
  std::optional<HttpResponse> response;
  std::optional<std::string> body;
  TransportError error = TransportError::kNone;
  std::string errorDescription;
};

class HttpSession {
 public:
  using CompletionHandler = std::function<void(HttpOutcome)>;

  virtual ~HttpSession() = default;

  // Starts a transfer and returns at once. `handler` runs exactly once, on the
  // session's own thread, unless the session is destroyed first, in which case
  // pending transfers are dropped without a call. No transfer can be cancelled.
  virtual void dataTask(HttpRequest request, CompletionHandler handler) = 0;

  // The process's session: a libcurl session created on first use, unless
  // another was installed with setShared().
  static std::shared_ptr<HttpSession> shared();
  // Installs the session later calls of shared() return (a fault-injecting
  // wrapper in tests, a platform binding on a phone). nullptr restores the
  // default libcurl session. Returns the session in use before (null when
  // none had been made yet), so a caller can put it back.
  static std::shared_ptr<HttpSession> setShared(std::shared_ptr<HttpSession> session);
};

// True on the thread where the default session runs its completion handlers.
// Lets tests and checks tell completions apart from main-loop work.
bool IsHttpSessionThread();

}  // namespace obolo

#endif  // OBOLO_PLATFORM_HTTP_SESSION_H_
