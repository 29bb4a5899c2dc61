// A real, local paywall service for the kit's tests, its demo and app
// developers: the seven API calls the kit makes, the wallet site's login page
// that the kit's web login screen loads, and hooks for tests (recorded
// requests, faults, login keys and sessions made to order).
//
// Each Sandbox is a whole service of its own: its own world, token secret,
// certificate, port, recorded requests and faults. Several may run in one
// process at once.
//
//   obolo::sandbox::Sandbox sandbox;          // HTTPS, any free port, default world
//   if (!sandbox.start()) FAIL() << sandbox.error();
//   std::string base = sandbox.baseUrl();     // "https://127.0.0.1:40123"
//   std::string ca = sandbox.caFile();        // trust this PEM file (OBOLO_CA_FILE)
//
// Threads: start(), stop(), reset() and destruction are for one controlling
// thread at a time. Everything else may be called from any thread, also while
// requests are being served; reads return copies.
//
// No public function throws. start() ignores SIGPIPE for the whole process
// when its disposition is still the default, so that a client that goes away
// cannot kill the process the sandbox runs in.

#ifndef OBOLO_SANDBOX_SANDBOX_H_
#define OBOLO_SANDBOX_SANDBOX_H_

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/default_world.h"
#include "sandbox/fault.h"
#include "sandbox/paths.h"
#include "sandbox/recorded_request.h"
#include "sandbox/world_types.h"

namespace obolo::sandbox {

struct SandboxOptions {
  // HTTPS with a self-signed certificate made at start(), or plain HTTP.
  bool https = true;
  // The port on 127.0.0.1; 0 takes any free port.
  int port = 0;
  // Lifetimes of the tokens a login or refresh issues. Zero or negative ones
  // make tokens that are already expired.
  std::chrono::seconds accessTokenLifetime{3600};
  std::chrono::seconds refreshTokenLifetime{30 * 24 * 3600};
  // Start with the world of default_world.h, or with an empty one.
  bool seedDefaultWorld = true;
  // Whether a connection may carry more than one request. Off by default:
  // every answer then says "Connection: close", so each request comes on a
  // fresh connection. That keeps faults exact for any client (plain libcurl
  // silently repeats a request whose reused connection closed without any
  // answer, which would hide a kCloseWithoutResponse fault) and lets stop()
  // return at once.
  bool keepAlive = false;
  // With keepAlive, how long an idle connection is kept before the sandbox
  // closes it: 5 s by default, as cpp-httplib and Apache keep one; nginx
  // keeps one for 75 s.
  std::chrono::seconds keepAliveIdle{5};
  // Threads serving connections. With keepAlive, an idle connection holds
  // one until keepAliveIdle has passed, and stop() waits for it.
  int workerThreads = 16;
  // With keepAlive, the requests answered on one connection before the
  // sandbox closes it (cpp-httplib's default, 5). A production service behind
  // a load balancer keeps a connection for far more; benchmarks that measure
  // a call rather than TLS handshakes raise it.
  int keepAliveMaxRequests = 5;
  // Sends answers with TCP_NODELAY. An answer's headers and body go out in
  // separate writes; with Nagle's algorithm the body waits for the client's
  // delayed acknowledgement of the headers, about 40 ms on every call.
  bool tcpNoDelay = true;
};

class Sandbox {
 public:
  explicit Sandbox(SandboxOptions options = {});
  // Stops the service.
  ~Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  // --- Running -------------------------------------------------------------

  // Makes the certificate (HTTPS), binds the port and serves; returns once
  // requests are accepted. True when it serves (also when it already did);
  // false with error() telling why. The world, recorded requests and faults
  // survive a stop() and a later start().
  bool start();
  // Stops serving and removes the certificate's directory; a slow answer in
  // progress is cut short. Idempotent.
  void stop();
  bool isRunning() const;
  // Why the last start() failed; empty when it did not.
  std::string error() const;

  // "https://127.0.0.1:PORT" (or http), without a trailing slash; empty while
  // stopped. The API, the login page and the logo are all under it.
  std::string baseUrl() const;
  int port() const;
  // The PEM file of the certificate to trust; empty for HTTP or while stopped.
  std::string caFile() const;
  // The logo address the kit's login screen puts in the login address.
  std::string logoUrl() const;
  // The login address as the kit's web login screen builds it, with this
  // sandbox as wallet site, logo host and redirect origin.
  std::string loginPageUrl(std::int64_t publisher_id, std::int64_t bid_id) const;

  // --- The world -----------------------------------------------------------

  // False when the id or domain is taken; id 0 gets a free id.
  bool addPublisher(const Publisher& publisher);
  // False when the publisher is unknown or the address taken; id 0 gets a free id.
  bool addArticle(const Article& article);
  // False when the e-mail or id is taken; id 0 gets a free id.
  bool addCustomer(const Customer& customer);

  std::optional<Customer> customer(std::string_view email) const;
  std::optional<double> balance(std::string_view email) const;
  // False also when the customer or the article is unknown.
  bool ownsArticle(std::string_view email, std::string_view article_url) const;
  // True once the device logged out, and for a device that never completed
  // a login; none for a device key the sandbox never issued.
  std::optional<bool> isDeviceLoggedOut(std::string_view device_key) const;
  std::optional<Bid> bid(std::int64_t bid_id) const;

  // Back to the world of the options, with no recorded requests and no
  // faults. Issued keys and tokens stop working.
  void reset();

  // --- Test hooks ----------------------------------------------------------

  // A new device key and one-time login key for the customer, as the login
  // page hands them over; a customer bid with them completes the login.
  std::optional<LoginKeys> issueLoginKeys(std::string_view email);
  // A logged-in device for the customer, with its tokens: what the kit holds
  // after a login. Lifetimes may be zero or negative for expired tokens.
  std::optional<SessionKeys> createSession(std::string_view email, std::chrono::seconds access_lifetime,
                                           std::chrono::seconds refresh_lifetime);
  // The same with the current token lifetimes.
  std::optional<SessionKeys> createSession(std::string_view email);
  // Lifetimes of tokens issued from now on by logins and refreshes.
  void setTokenLifetimes(std::chrono::seconds access, std::chrono::seconds refresh);
  // The one-time code the login page last handed out for the e-mail and that
  // is still unused.
  std::optional<std::string> lastOneTimeCode(std::string_view email) const;

  // --- Recorded requests ---------------------------------------------------

  // Every request to a route the sandbox serves, in arrival order. A request
  // is recorded before its answer is sent.
  std::vector<RecordedRequest> requests() const;
  std::vector<RecordedRequest> requestsTo(std::string_view path) const;
  void clearRequests();

  // --- Faults --------------------------------------------------------------

  // Sets the fault for the route at `path` (e.g. kAcceptBidPath), replacing
  // any fault set there before.
  void setFault(std::string_view path, Fault fault);
  void clearFault(std::string_view path);
  void clearFaults();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_SANDBOX_H_
