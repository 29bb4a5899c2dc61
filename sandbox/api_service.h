// The seven calls of the paywall service's API, over a World. Each takes what
// the HTTP front hands it (the body and the Authorization field) and returns
// the whole answer: HTTP status and JSON envelope.
//
// Refusals follow one pattern: HTTP 400 for a body that is not a JSON object
// or has a member of the wrong type, 401 for a bearer or refresh token that
// does not hold, and the world's own status (402, 403, 404, 409) otherwise;
// every refusal carries the envelope {success:false, message, statusCode}.
// Thread-safe: the world serialises access; the service itself keeps nothing
// that changes.

#ifndef OBOLO_SANDBOX_API_SERVICE_H_
#define OBOLO_SANDBOX_API_SERVICE_H_

#include <functional>
#include <string>

#include "sandbox/answer.h"
#include "sandbox/world.h"

namespace obolo::sandbox {

class ApiService {
 public:
  // `image_url` gives the picture address of recommendations; it is asked on
  // each call, since the address is known only once the server listens.
  // `world` must outlive the service.
  ApiService(World& world, std::function<std::string()> image_url);

  Answer createLoggedOutBid(const Call& call);  // POST, no bearer
  Answer createLoggedInBid(const Call& call);   // POST, bearer
  Answer customerBid(const Call& call);         // POST, no bearer
  Answer nextAccessToken(const Call& call);     // PUT, no bearer
  Answer acceptBid(const Call& call);           // PUT, bearer
  Answer balanceAndArticles(const Call& call);  // POST, bearer
  Answer logoutDevice(const Call& call);        // PUT, bearer

 private:
  World& world_;
  std::function<std::string()> image_url_;
};

// The token of an Authorization value "Bearer <token>" (the scheme compared
// without regard to case); empty when the value has another form.
std::string BearerToken(std::string_view authorization);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_API_SERVICE_H_
