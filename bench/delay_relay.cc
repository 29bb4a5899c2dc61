#include "bench/delay_relay.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <list>
#include <mutex>
#include <type_traits>
#include <vector>

namespace obolo::bench {
namespace {

using Clock = std::chrono::steady_clock;

void NoDelay(int fd) {
  int one = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

void NonBlocking(int fd) { fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK); }

int ConnectLoopback(int port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(fd);
    return -1;
  }
  NoDelay(fd);
  NonBlocking(fd);
  return fd;
}

// Bytes (or the end of the stream) on their way in one direction.
struct Flight {
  Clock::time_point due;
  std::string bytes;
  bool end = false;
};

struct Direction {
  int from = -1;
  int to = -1;
  std::deque<Flight> travelling;
  std::string arrived;      // due, not yet written to `to`
  bool from_ended = false;  // `from` reached its end (or failed)
  bool end_arrived = false;
  bool to_shut = false;
};

struct Connection {
  Clock::time_point accepted;
  Direction up;    // client to server
  Direction down;  // server to client
  bool client_flight_open = false;
  Clock::time_point last_to_client;  // the server's bytes last reached the client
  Clock::time_point last_to_server;  // the client's bytes last reached the server
  long long client_counted_us = 0;   // of the client's time since last_to_client
  long long server_counted_us = 0;   // of the server's time since last_to_server
  bool failed = false;

  bool done() const { return failed || (up.to_shut && down.to_shut); }
};

}  // namespace

struct DelayRelay::Loop {
  int listen_fd = -1;
  int wake_fd = -1;
  std::list<Connection> connections;

  std::mutex mutex;
  bool stopping = false;  // guarded by mutex
  bool drop = false;      // guarded by mutex
  Counts counts;          // guarded by mutex
  Clock::time_point reset_at;  // guarded by mutex

  ~Loop() {
    for (auto& connection : connections) Close(connection);
    if (listen_fd >= 0) close(listen_fd);
    if (wake_fd >= 0) close(wake_fd);
  }

  void Wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wake_fd, &one, sizeof one);
  }

  static void Close(Connection& connection) {
    if (connection.up.from >= 0) close(connection.up.from);
    if (connection.up.to >= 0) close(connection.up.to);
    connection.up.from = connection.up.to = connection.down.from = connection.down.to = -1;
  }

  template <typename T>
  void Count(T Counts::*counter, std::type_identity_t<T> amount) {
    std::lock_guard<std::mutex> lock(mutex);
    counts.*counter += amount;
  }

  void Accept(std::chrono::microseconds) {
    for (;;) {
      const int client = accept4(listen_fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
      if (client < 0) return;
      NoDelay(client);
      const int server = ConnectLoopback(target_port);
      if (server < 0) {
        close(client);
        continue;
      }
      Connection& connection = connections.emplace_back();
      connection.accepted = Clock::now();
      connection.last_to_client = connection.accepted;
      connection.up.from = connection.down.to = client;
      connection.up.to = connection.down.from = server;
      Count(&Counts::connections, 1);
      Count(&Counts::roundTrips, 1);  // the TCP handshake
      NoteClient(connection.accepted);
    }
  }

  // True for the client's first connection or bytes since the counts' reset.
  bool NoteClient(Clock::time_point now) {
    std::lock_guard<std::mutex> lock(mutex);
    if (counts.firstFromClient != Clock::time_point{}) return false;
    counts.firstFromClient = now;
    return true;
  }

  // Bytes just read from one side. The time from the other side's bytes last
  // reaching it to these is that side's own (thinking, computing, sending in
  // pieces); a flight's later pieces extend it. A side that speaks more than
  // a second after is not answering (a connection closed after idling), and
  // counts nothing.
  void NoteThinking(Connection& connection, bool up, Clock::time_point now) {
    if (up && NoteClient(now)) return;  // the client's time before it is not on the link
    Clock::time_point since = up ? connection.last_to_client : connection.last_to_server;
    {
      std::lock_guard<std::mutex> lock(mutex);
      since = std::max(since, reset_at);  // what came before the counts' reset is not theirs
    }
    long long& counted = up ? connection.client_counted_us : connection.server_counted_us;
    const long long took = std::chrono::duration_cast<std::chrono::microseconds>(now - since).count();
    if (took > 1'000'000 || took <= counted) return;
    Count(up ? &Counts::clientUs : &Counts::serverUs, took - counted);
    counted = took;
  }

  // Reads what `direction.from` has and sends it on its way.
  void Read(Connection& connection, Direction& direction, bool up, std::chrono::microseconds delay) {
    char buffer[64 * 1024];
    for (;;) {
      const ssize_t count = read(direction.from, buffer, sizeof buffer);
      if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
      auto now = Clock::now();
      if (count > 0) NoteThinking(connection, up, now);
      // A new connection's first bytes leave once its handshake is done.
      if (up && now < connection.accepted + 2 * delay) now = connection.accepted + 2 * delay;
      Flight flight{now + delay, {}, count <= 0};
      if (count > 0) {
        flight.bytes.assign(buffer, static_cast<size_t>(count));
        Count(up ? &Counts::bytesUp : &Counts::bytesDown, count);
        if (up && !connection.client_flight_open) {
          connection.client_flight_open = true;
          Count(&Counts::roundTrips, 1);
        }
      }
      direction.travelling.push_back(std::move(flight));
      if (count <= 0) {
        direction.from_ended = true;
        // A client flight that ends with the client closing, unanswered, was
        // a goodbye (TLS's close notice on an idle connection it gives up),
        // not a round trip: nothing waited for an answer.
        if (up && connection.client_flight_open) {
          connection.client_flight_open = false;
          Count(&Counts::roundTrips, -1L);
        }
        return;
      }
    }
  }

  // Writes what is due; false when the other side failed.
  bool Deliver(Connection& connection, Direction& direction, bool up, Clock::time_point now) {
    while (!direction.travelling.empty() && direction.travelling.front().due <= now) {
      Flight& flight = direction.travelling.front();
      if (flight.end) {
        direction.end_arrived = true;
      } else {
        direction.arrived += flight.bytes;
      }
      direction.travelling.pop_front();
    }
    while (!direction.arrived.empty()) {
      const ssize_t written = send(direction.to, direction.arrived.data(), direction.arrived.size(), MSG_NOSIGNAL);
      if (written < 0) {
        if (errno == EAGAIN || errno == EWOULDBLOCK) return true;
        return false;
      }
      direction.arrived.erase(0, static_cast<size_t>(written));
      if (up) {
        connection.last_to_server = now;
        connection.server_counted_us = 0;
      } else {
        connection.client_flight_open = false;  // the server's bytes reached the client
        connection.last_to_client = now;
        connection.client_counted_us = 0;
        std::lock_guard<std::mutex> lock(mutex);
        counts.lastToClient = now;
      }
    }
    if (direction.end_arrived && !direction.to_shut) {
      shutdown(direction.to, SHUT_WR);
      direction.to_shut = true;
    }
    return true;
  }

  void Run(const std::atomic<long long>& delay_us) {
    std::vector<pollfd> fds;
    for (;;) {
      {
        std::lock_guard<std::mutex> lock(mutex);
        if (stopping) return;
        if (drop) {
          drop = false;
          for (auto& connection : connections) Close(connection);
          connections.clear();
        }
      }
      const std::chrono::microseconds delay(delay_us.load());
      auto now = Clock::now();
      Clock::time_point next = Clock::time_point::max();
      fds.clear();
      fds.push_back({listen_fd, POLLIN, 0});
      fds.push_back({wake_fd, POLLIN, 0});
      for (auto& connection : connections) {
        for (Direction* direction : {&connection.up, &connection.down}) {
          if (!direction->travelling.empty() && direction->travelling.front().due < next) {
            next = direction->travelling.front().due;
          }
        }
        // A side with nothing to wait for is left out (fd -1), or its hang-up
        // would wake the loop at once, over and over.
        auto watch = [&](int fd, bool reading, bool writing) {
          const short events = static_cast<short>((reading ? POLLIN : 0) | (writing ? POLLOUT : 0));
          fds.push_back({events != 0 ? fd : -1, events, 0});
        };
        watch(connection.up.from, !connection.up.from_ended, !connection.down.arrived.empty());
        watch(connection.down.from, !connection.down.from_ended, !connection.up.arrived.empty());
      }
      timespec timeout{};
      timespec* wait = nullptr;
      if (next != Clock::time_point::max()) {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(next - now).count();
        timeout.tv_sec = left > 0 ? left / 1'000'000'000 : 0;
        timeout.tv_nsec = left > 0 ? left % 1'000'000'000 : 0;
        wait = &timeout;
      }
      if (ppoll(fds.data(), fds.size(), wait, nullptr) < 0 && errno != EINTR) return;

      if (fds[1].revents & POLLIN) {
        std::uint64_t ignored = 0;
        [[maybe_unused]] const ssize_t read_count = read(wake_fd, &ignored, sizeof ignored);
      }
      if (fds[0].revents & POLLIN) Accept(delay);
      size_t at = 2;
      for (auto& connection : connections) {
        if (at + 1 >= fds.size()) break;  // accepted in this turn: no events yet
        if (fds[at].revents & (POLLIN | POLLHUP | POLLERR)) Read(connection, connection.up, true, delay);
        if (fds[at + 1].revents & (POLLIN | POLLHUP | POLLERR)) Read(connection, connection.down, false, delay);
        at += 2;
      }
      now = Clock::now();
      for (auto it = connections.begin(); it != connections.end();) {
        if (!Deliver(*it, it->up, true, now) || !Deliver(*it, it->down, false, now)) it->failed = true;
        if (it->done()) {
          Close(*it);
          it = connections.erase(it);
        } else {
          ++it;
        }
      }
    }
  }

  int target_port = 0;
};

DelayRelay::DelayRelay(int target_port) : target_port_(target_port) {}

DelayRelay::~DelayRelay() {
  if (loop_) {
    {
      std::lock_guard<std::mutex> lock(loop_->mutex);
      loop_->stopping = true;
    }
    loop_->Wake();
    if (thread_.joinable()) thread_.join();
  }
}

bool DelayRelay::start() {
  auto loop = std::make_unique<Loop>();
  loop->target_port = target_port_;
  loop->wake_fd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  loop->listen_fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (loop->wake_fd < 0 || loop->listen_fd < 0) return false;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (bind(loop->listen_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(loop->listen_fd, 1024) != 0 ||
      getsockname(loop->listen_fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    return false;
  }
  port_ = ntohs(address.sin_port);
  loop_ = std::move(loop);
  thread_ = std::thread([this] { loop_->Run(delay_us_); });
  return true;
}

void DelayRelay::dropConnections() {
  {
    std::lock_guard<std::mutex> lock(loop_->mutex);
    loop_->drop = true;
  }
  loop_->Wake();
}

DelayRelay::Counts DelayRelay::counts() const {
  std::lock_guard<std::mutex> lock(loop_->mutex);
  return loop_->counts;
}

void DelayRelay::resetCounts() {
  std::lock_guard<std::mutex> lock(loop_->mutex);
  loop_->counts = Counts{};
  loop_->reset_at = Clock::now();
}

}  // namespace obolo::bench
