// A TCP relay on loopback that makes a link as slow as a phone's: every chunk
// of bytes reaches the other side a fixed delay after it arrived, in order,
// in both directions. The TCP handshake a phone makes before its first byte
// costs a round trip too, so a new connection's first bytes are held one
// round trip before they travel.
//
// It also counts what a round trip is from the link's point of view: each
// time the client starts sending after the server's last bytes reached it
// (or sends the first bytes of a connection), a new round trip begins, and a
// new connection adds its handshake's. A TLS 1.3 handshake then counts one,
// and a request with its answer one more.
//
// One thread, with a timer queue, serves every connection. Benchmark code
// only: no TLS of its own, bytes pass through untouched.

#ifndef OBOLO_BENCH_DELAY_RELAY_H_
#define OBOLO_BENCH_DELAY_RELAY_H_

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace obolo::bench {

class DelayRelay {
 public:
  // Relays 127.0.0.1:port() to 127.0.0.1:target_port.
  explicit DelayRelay(int target_port);
  ~DelayRelay();
  DelayRelay(const DelayRelay&) = delete;
  DelayRelay& operator=(const DelayRelay&) = delete;

  // False when it cannot listen.
  bool start();
  int port() const { return port_; }

  // The delay each way, for chunks that arrive from now on.
  void setOneWayDelay(std::chrono::microseconds delay) { delay_us_ = delay.count(); }
  std::chrono::microseconds oneWayDelay() const { return std::chrono::microseconds(delay_us_.load()); }

  // Closes every open connection at once (both sides), as a phone's link
  // drops idle connections; counters are kept.
  void dropConnections();

  // Counters since the last reset.
  struct Counts {
    long connections = 0;  // accepted from the client
    long roundTrips = 0;   // handshakes plus client flights (see above)
    long bytesUp = 0;      // client to server
    long bytesDown = 0;    // server to client
    // Where time beyond the delays went, in microseconds: the client's time
    // from the server's last bytes reaching it (or from connecting) to its
    // next bytes, and the server's from the client's last bytes to its
    // answer's first. What the relay itself adds is neither.
    long long clientUs = 0;
    long long serverUs = 0;
    // When the client first connected or sent bytes, and when the server's
    // bytes last reached it (both empty while nothing happened).
    std::chrono::steady_clock::time_point firstFromClient;
    std::chrono::steady_clock::time_point lastToClient;
  };
  Counts counts() const;
  void resetCounts();

 private:
  struct Loop;
  int target_port_;
  int port_ = 0;
  std::atomic<long long> delay_us_{0};
  std::unique_ptr<Loop> loop_;
  std::thread thread_;
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_DELAY_RELAY_H_
