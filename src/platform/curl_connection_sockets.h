// The sockets of a curl multi handle's connections, so that a kept
// connection the server gave up on while it was idle is retired before
// libcurl hands it to a new request.
//
// Between requests an HTTP/1.1 server sends nothing on a kept connection,
// except when it closes it: TLS's close notice, then the end of the stream.
// libcurl's own check before reusing a connection reads the close notice as a
// sign of life, and a request sent on such a connection is lost (the session
// never sends a request twice). retireClosed() looks at every connection
// while none is in use and makes each one with bytes or an end waiting look
// closed to libcurl, which then opens a new connection instead.
//
// Session thread only.

#ifndef OBOLO_PLATFORM_CURL_CONNECTION_SOCKETS_H_
#define OBOLO_PLATFORM_CURL_CONNECTION_SOCKETS_H_

#include <curl/curl.h>

#include <vector>

namespace obolo {

class CurlConnectionSockets {
 public:
  // Makes the sockets the transfer on `easy` opens and closes known here.
  // Set again after every curl_easy_reset().
  void track(CURL* easy);

  // For a moment when no transfer runs (every connection is idle): retires
  // each connection that has bytes or its end waiting. Returns how many.
  int retireClosed();

  // The connections open now.
  std::size_t size() const { return sockets_.size(); }

 private:
  static int OnOpened(void* self, curl_socket_t socket, curlsocktype purpose);
  static int OnClosing(void* self, curl_socket_t socket);

  std::vector<curl_socket_t> sockets_;
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_CURL_CONNECTION_SOCKETS_H_
