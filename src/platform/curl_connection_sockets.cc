#include "platform/curl_connection_sockets.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace obolo {
namespace {

// A connection retired with more than this still arriving is shut anyway;
// libcurl then fails to send on it rather than read it for ever.
constexpr int kDrainBytes = 64 * 1024;

// Whether `fd` is still a TCP/IP socket. Every socket here is closed through
// OnClosing(); this keeps a number that was ever closed some other way, and
// then reused for another kind of file, from being shut.
bool IsInternetSocket(int fd) {
  int domain = 0;
  socklen_t length = sizeof domain;
  if (getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &length) != 0) return false;
  return domain == AF_INET || domain == AF_INET6;
}

}  // namespace

void CurlConnectionSockets::track(CURL* easy) {
  curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &CurlConnectionSockets::OnOpened);
  curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, this);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &CurlConnectionSockets::OnClosing);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
}

int CurlConnectionSockets::OnOpened(void* self, curl_socket_t socket, curlsocktype purpose) {
  if (purpose != CURLSOCKTYPE_IPCXN) return CURL_SOCKOPT_OK;
  auto& sockets = static_cast<CurlConnectionSockets*>(self)->sockets_;
  if (std::find(sockets.begin(), sockets.end(), socket) == sockets.end()) sockets.push_back(socket);
  return CURL_SOCKOPT_OK;
}

int CurlConnectionSockets::OnClosing(void* self, curl_socket_t socket) {
  std::erase(static_cast<CurlConnectionSockets*>(self)->sockets_, socket);
  return close(socket);
}

int CurlConnectionSockets::retireClosed() {
  if (sockets_.empty()) return 0;
  std::vector<pollfd> watched;
  watched.reserve(sockets_.size());
  for (curl_socket_t socket : sockets_) watched.push_back({socket, POLLIN | POLLRDHUP, 0});
  if (poll(watched.data(), watched.size(), 0) <= 0) return 0;
  int retired = 0;
  for (const pollfd& connection : watched) {
    if (connection.revents == 0 || !IsInternetSocket(connection.fd)) continue;
    // Read away what waits (the close notice), then shut both ways: libcurl's
    // check finds the end of the stream and closes the connection itself.
    char buffer[4096];
    for (int drained = 0; drained < kDrainBytes;) {
      const ssize_t got = recv(connection.fd, buffer, sizeof buffer, MSG_DONTWAIT);
      if (got <= 0) break;
      drained += static_cast<int>(got);
    }
    shutdown(connection.fd, SHUT_RDWR);
    ++retired;
  }
  return retired;
}

}  // namespace obolo
