// The floor for one service call: libcurl alone, on the calling thread.
//
// One easy handle, set up once and reused, so it keeps its connection (and
// TLS session) between calls exactly as the kit's shared session keeps its
// own: both clients run under the same connection policy, keep-alive. Each
// roundTrip() sends the request the kit sends (method, address, header fields
// in the kit's order and spelling, no "Expect", body, TLS with the sandbox's
// certificate) and collects the whole body.
//
// Not thread-safe; one client per thread.

#ifndef OBOLO_BENCH_BARE_CLIENT_H_
#define OBOLO_BENCH_BARE_CLIENT_H_

#include <string>

#include "bench/bid_request.h"

typedef void CURL;
struct curl_slist;

namespace obolo::bench {

class BareClient {
 public:
  explicit BareClient(WireRequest request);
  ~BareClient();
  BareClient(const BareClient&) = delete;
  BareClient& operator=(const BareClient&) = delete;

  // Sends the request and waits for the whole answer, left in `body`. The HTTP
  // status, or 0 after a transport failure.
  long roundTrip(std::string& body);
  // Connections opened so far (new TLS handshakes).
  long connectionsOpened() const { return connections_; }

 private:
  WireRequest request_;
  CURL* easy_ = nullptr;
  curl_slist* headers_ = nullptr;
  long connections_ = 0;
};

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_BARE_CLIENT_H_
