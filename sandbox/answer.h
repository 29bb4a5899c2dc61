// What a route sees of a request and what it answers, independent of the HTTP
// server underneath.

#ifndef OBOLO_SANDBOX_ANSWER_H_
#define OBOLO_SANDBOX_ANSWER_H_

#include <string>

#include "sandbox/records.h"

namespace obolo::sandbox {

struct Call {
  std::string body;
  // The Authorization field's value, empty when the client sent none.
  std::string authorization;
};

struct Answer {
  int status = 200;
  std::string contentType = "application/json";
  std::string body;

  static Answer FromJson(int status, const Json& json) {
    return Answer{status, "application/json", Dump(json)};
  }
};

// The shape of a route's JSON answers, which decides what a fault that
// breaks a member's type writes.
enum class Envelope {
  kOboloData,
  kNextTokenData,
  kBalanceAndArticleData,
  kLogoutData,
  kLoginJson,  // the login page's own calls
  kNone,       // pages and images
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_ANSWER_H_
