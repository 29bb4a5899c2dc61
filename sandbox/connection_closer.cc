#include "sandbox/connection_closer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <string>
#include <system_error>

namespace obolo::sandbox {
namespace {

int PortOf(const sockaddr_storage& address) {
  if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
  return -1;
}

}  // namespace

bool ShutdownConnection(int local_port, int peer_port) {
  std::error_code ec;
  std::filesystem::directory_iterator entries("/proc/self/fd", ec);
  if (ec) return false;
  for (const auto& entry : entries) {
    const std::string name = entry.path().filename().string();
    int fd = -1;
    auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), fd);
    if (error != std::errc() || end != name.data() + name.size()) continue;

    sockaddr_storage local{};
    sockaddr_storage peer{};
    socklen_t local_length = sizeof local;
    socklen_t peer_length = sizeof peer;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &local_length) != 0) continue;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peer_length) != 0) continue;
    if (PortOf(local) == local_port && PortOf(peer) == peer_port) {
      return shutdown(fd, SHUT_RDWR) == 0;
    }
  }
  return false;
}

}  // namespace obolo::sandbox
