// Many transfers to one host at once share a few kept-alive connections
// instead of opening one each: a host that loads a thousand paywalls must not
// open a thousand connections (each a handshake, each a server worker held).
// Against a plain HTTP server of the test's own on loopback, which keeps
// connections alive, answers each request after a short pause so transfers
// overlap, and counts the connections it accepts.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/curl_http_session.h"

namespace obolo {
namespace {

class KeepAliveServer {
 public:
  KeepAliveServer() {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener_, 128) != 0) return;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] {
      for (;;) {
        const int connection = accept(listener_, nullptr, nullptr);
        if (connection < 0) return;  // the listener was shut down
        ++accepted_;
        std::lock_guard<std::mutex> lock(mutex_);
        connections_.push_back(connection);
        servers_.emplace_back([this, connection] { Serve(connection); });
      }
    });
  }

  ~KeepAliveServer() {
    shutdown(listener_, SHUT_RDWR);
    if (acceptor_.joinable()) acceptor_.join();
    close(listener_);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      for (int connection : connections_) shutdown(connection, SHUT_RDWR);
    }
    for (auto& server : servers_) server.join();
    for (int connection : connections_) close(connection);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/item"; }
  int accepted() const { return accepted_; }
  int mostOpenAtOnce() const { return most_open_; }

 private:
  // Answers every request on the connection until the client closes it.
  void Serve(int connection) {
    const int open = ++open_;
    int seen = most_open_;
    while (open > seen && !most_open_.compare_exchange_weak(seen, open)) {
    }
    std::string received;
    char buffer[4096];
    for (;;) {
      const ssize_t got = recv(connection, buffer, sizeof buffer, 0);
      if (got <= 0) break;
      received.append(buffer, static_cast<size_t>(got));
      size_t end = 0;
      while ((end = received.find("\r\n\r\n")) != std::string::npos) {
        received.erase(0, end + 4);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";
        send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
      }
    }
    --open_;
  }

  int listener_ = -1;
  int port_ = 0;
  std::thread acceptor_;
  std::mutex mutex_;
  std::vector<int> connections_;
  std::vector<std::thread> servers_;
  std::atomic<int> accepted_{0};
  std::atomic<int> open_{0};
  std::atomic<int> most_open_{0};
};

TEST(CurlConnectionLimitTest, ManyTransfersAtOnceShareAFewConnectionsAndAllComplete) {
  KeepAliveServer server;
  constexpr int kTransfers = 60;
  std::mutex mutex;
  std::condition_variable done;
  int answered = 0;
  int failed = 0;
  {
    CurlHttpSession session;
    for (int i = 0; i < kTransfers; ++i) {
      HttpRequest request;
      request.url = server.url();
      session.dataTask(std::move(request), [&](HttpOutcome outcome) {
        std::lock_guard<std::mutex> lock(mutex);
        (outcome.body && *outcome.body == "ok" ? answered : failed) += 1;
        done.notify_all();
      });
    }
    std::unique_lock<std::mutex> lock(mutex);
    done.wait_for(lock, std::chrono::seconds(30), [&] { return answered + failed == kTransfers; });
  }
  EXPECT_EQ(answered, kTransfers);
  EXPECT_EQ(failed, 0);
  EXPECT_GE(server.accepted(), 2) << "the transfers ran one after the other";
  EXPECT_LE(server.accepted(), 6);
  EXPECT_LE(server.mostOpenAtOnce(), 6);
}

}  // namespace
}  // namespace obolo
