// The kit's only client of the paywall service.
//
// Seven calls, each of which turns a request record into a JSON body, sends
// one request over the shared HTTP session and reports the decoded answer to
// `completion`, or a failure text to `onFailure`. Each call returns at once and
// later invokes at most one of its two closures, at most once:
//
//   - a header value holds CR, LF or NUL (a stored token can): no request is
//     sent, one line says which field, and neither closure runs;
//   - no body arrived (no network, time-out, TLS failure, connection closed):
//     neither closure runs; the transport error is dropped;
//   - the body passed 1 MiB: onFailure with "The data couldn't be read
//     because it is too large.";
//   - the body does not decode into the call's envelope: onFailure with the
//     decoding failure's sentence;
//   - createLoggedInBid only: an envelope whose `success` is not true goes to
//     onFailure with its `message` ("" when absent);
//   - otherwise completion, whatever `success`, `message` or the HTTP status
//     say. Judging the answer is the caller's business.
//
// A call follows no redirect: a 3xx answer is the answer, decoded like any
// other, and each call sends at most one request, to the service's address.
//
// Threads: a call may be issued from any thread; the bearer token is read from
// the session store on the issuing thread. Both closures run on the HTTP
// session's own thread, never on the main loop: a caller that touches views
// posts to the main loop itself. Calls are independent and may overlap; none
// can be cancelled. The manager keeps no state.

#ifndef OBOLO_NETWORK_NETWORK_MANAGER_H_
#define OBOLO_NETWORK_NETWORK_MANAGER_H_

#include <functional>
#include <string>

#include "network/request_records.h"
#include "network/response_records.h"

namespace obolo {

template <class Envelope>
using Completion = std::function<void(Envelope)>;
using OnFailure = std::function<void(std::string)>;

class NetworkManager {
 public:
  NetworkManager() = default;
  // The instance every caller uses.
  static NetworkManager& shared();

  // The body map of a create-bid request.
  BodyMap getCreateLoggedParams(const CreateLoggedBidParam& param) const;

  // POST, no bearer. Answer: OboloData.
  void createLoggedOutBid(const CreateLoggedBidParam& param, Completion<OboloData> completion,
                          OnFailure onFailure) const;
  // POST with the bearer token and no Accept header. Answer: OboloData, which
  // reaches completion only when its `success` is true.
  void createLoggedInBid(const CreateLoggedBidParam& param, Completion<OboloData> completion,
                         OnFailure onFailure) const;
  // POST, no bearer: completes a login with the keys the login page handed out.
  void customerBid(const CustomerBidParam& param, Completion<OboloData> completion, OnFailure onFailure) const;
  // PUT, no bearer. Answer: NextTokenData.
  void getNextAccessToken(const NextTokenParam& param, Completion<NextTokenData> completion,
                          OnFailure onFailure) const;
  // PUT with the bearer token: pays for the article.
  void acceptBid(const AcceptBidParam& param, Completion<OboloData> completion, OnFailure onFailure) const;
  // POST with the bearer token. Answer: BalanceAndArticleData.
  void getBalanceAndArticles(const BalanceAndArticleParam& param, Completion<BalanceAndArticleData> completion,
                             OnFailure onFailure) const;
  // PUT with the bearer token. Answer: LogoutData (its `data` is required).
  void logout(const LogoutParam& param, Completion<LogoutData> completion, OnFailure onFailure) const;
};

}  // namespace obolo

#endif  // OBOLO_NETWORK_NETWORK_MANAGER_H_
