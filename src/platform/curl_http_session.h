// The default HTTP session, on libcurl.
//
// One thread drives every transfer through a curl multi handle, so transfers
// run concurrently and share connections, TLS sessions and DNS answers. The
// same thread runs the completion handlers, one at a time: a slow handler
// delays other completions, as on a platform's serial delegate queue.
//
// At most six connections are open to one host at a time; further transfers
// to it wait for one of them, as on a phone's URL session.
//
// Certificates are checked against the system's store (libcurl's bundle of
// it). OBOLO_CA_FILE, read once at first use, names a PEM file to trust
// instead: the sandbox prints such a file for its self-signed certificate.
// Either file is parsed at the first connection and kept for the session's
// later connections (a day at most), so a new connection does not pay for
// reading the system's whole store again.
//
// TLS sessions are kept for all transfers, so a new connection to a server
// that was connected before resumes its session instead of a full handshake.
//
// A request that starts while no other runs may reuse a connection idle for
// up to a minute, once connections the server closed meanwhile are retired:
// a reader who taps after reading for a while saves the TCP and TLS round
// trips whenever the server still keeps the connection. A request that
// starts beside others takes only a connection idle under 4 s.
//
// Each request states how far it may be redirected and how large an answer it
// takes (HttpRequest::maxRedirects, maxBodyBytes). The session follows
// redirects itself, hop by hop, so it can refuse a hop from https to http; a
// request with no redirects allowed gets its 3xx answer as the answer. A
// request with a header field that would break its line is refused before
// any byte goes out.
//
// A request reaches the server at most once: when a reused connection dies
// after a request body went out and before any answer, the transfer fails
// rather than letting libcurl send the body again on a new connection.

#ifndef OBOLO_PLATFORM_CURL_HTTP_SESSION_H_
#define OBOLO_PLATFORM_CURL_HTTP_SESSION_H_

#include <memory>
#include <thread>

#include "platform/http_session.h"

namespace obolo {

class CurlHttpSession final : public HttpSession {
 public:
  CurlHttpSession();
  // Stops the thread. Transfers still running are dropped without a call.
  ~CurlHttpSession() override;

  CurlHttpSession(const CurlHttpSession&) = delete;
  CurlHttpSession& operator=(const CurlHttpSession&) = delete;

  void dataTask(HttpRequest request, CompletionHandler handler) override;

  // Stops every session's thread; transfers still running are dropped without
  // a call. Runs when the process exits, before the TLS library is cleaned up.
  static void StopAllAtExit();

 private:
  struct Transfer;
  struct Core;

  static void Run(std::shared_ptr<Core> core);
  // Ends the thread, waiting for it unless called from it. Idempotent.
  void Stop();

  // Shared with the thread, so the thread can finish cleanly even when the
  // session is released from inside one of its own completion handlers.
  std::shared_ptr<Core> core_;
  std::thread thread_;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_CURL_HTTP_SESSION_H_
