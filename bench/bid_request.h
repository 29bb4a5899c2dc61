// The create-bid request a logged-out reader's paywall sends, as the kit's
// parameter record and as the exact bytes that go on the wire, so the kit and
// the bare libcurl reference send the same request.

#ifndef OBOLO_BENCH_BID_REQUEST_H_
#define OBOLO_BENCH_BID_REQUEST_H_

#include <string>

#include "network/request_records.h"

namespace obolo::bench {

// What PaywallVC::requestCreateLoggedOutBid fills in for the sandbox's
// normal-mode article.
CreateLoggedBidParam LoggedOutBidParam();

// The same request spelled out for a bare client.
struct WireRequest {
  std::string url;     // POST to this address
  std::string body;    // the JSON body the kit builds from LoggedOutBidParam()
  std::string caFile;  // the certificate to trust
};
// REQUIRES: the bench environment is set up.
WireRequest LoggedOutBidWireRequest();

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_BID_REQUEST_H_
