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
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace obolo {

// Header fields as name and value, in wire order.
using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

// One request. Header names and values go on the wire exactly as given (case
// included), in the order they were set. A field whose name or value holds CR,
// LF or NUL would split into lines of the caller's choosing on the wire: such a
// request is never sent (see IsSendableHeaderField).
struct HttpRequest {
  // The body cap of a request that names none: far above any answer of the
  // paywall service, far below what would strain a phone's memory.
  static constexpr std::size_t kDefaultMaxBodyBytes = 1024 * 1024;

  // The method, the absolute address, the header fields and the body (empty
  // for none).
  std::string method = "GET";
  std::string url;
  HttpHeaders headers;
  std::string body;
  // Time allowed for the whole transfer.
  std::chrono::milliseconds timeout{60'000};
  // Redirects the transfer may follow. With none (the default) a 3xx answer is
  // an answer like any other, delivered with its status and body, and the
  // request reaches exactly one address. Only a GET follows: a request with a
  // body never goes to a second address. A GET that may follow goes at most
  // this many hops and never from https to http; past either limit it fails
  // with kRedirectRefused. Its header fields go to every address on the way,
  // so such a request carries no credentials.
  int maxRedirects = 0;
  // The largest answer body the transfer accepts; a longer one ends it with
  // kResponseTooLarge and no body, so a broken or hostile server cannot make
  // the kit hold an unbounded answer.
  std::size_t maxBodyBytes = kDefaultMaxBodyBytes;
  // A request nothing on screen waits for (a picture). Among requests that
  // reach the session together it starts last, and among answers that are
  // ready together it is completed last, so that decoding it in its handler
  // does not hold back an answer a reader is waiting on.
  bool background = false;

  // Sets a header field, replacing any field of the same name (names compare
  // without regard to case, as HTTP does).
  void setValue(std::string_view value, std::string_view field);
  // Adds a value to a header field; a field already present gets ",value".
  void addValue(std::string_view value, std::string_view field);
  // The value of a field, none when it is not set.
  std::optional<std::string> value(std::string_view field) const;
};

// Why a transfer brought no answer; kNone when it did.
enum class TransportError {
  kNone,
  kInvalidUrl,
  kCannotResolveHost,
  kCannotConnect,
  kTimedOut,
  kSecureConnectionFailed,
  kConnectionLost,   // the peer closed the connection without a whole response
  kResponseTooLarge,  // the body passed the request's maxBodyBytes
  kRedirectRefused,   // past maxRedirects, or from https to http
  kInvalidHeader,     // a header field held CR, LF or NUL; nothing was sent
  kCancelled,        // the session shut down before the transfer ended
  kOther,
};

// The head of an answer that arrived.
struct HttpResponse {
  int statusCode = 0;  // whatever it is: 200, 401, 500...
  // The address the response came from, after any redirect.
  std::string url;
  HttpHeaders headers;  // as received, in order
};

// What a transfer produced. `response` and `body` are present together when an
// answer arrived (an empty body is present and empty); after a transport
// failure `body` is absent and `error` says why.
struct HttpOutcome {
  std::optional<HttpResponse> response;  // present when an answer arrived
  std::optional<std::string> body;       // present with the response
  TransportError error = TransportError::kNone;  // kNone when an answer arrived
  std::string errorDescription;                  // the transport's own words, for diagnostics
};

class HttpSession {
 public:
  // Receives a transfer's outcome, on the session's thread.
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

// True when the field can go on the wire as one header line: neither its name
// nor its value holds CR, LF or NUL.
bool IsSendableHeaderField(std::string_view name, std::string_view value);

// True on the thread where the default session runs its completion handlers.
// Lets tests and checks tell completions apart from main-loop work.
bool IsHttpSessionThread();

}  // namespace obolo

#endif  // OBOLO_PLATFORM_HTTP_SESSION_H_
