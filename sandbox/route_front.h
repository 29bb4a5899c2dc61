// Puts the sandbox's routes on a cpp-httplib server, with what every route
// shares: each request is recorded before anything is answered, a fault set
// on the route's path replaces or delays the answer, and no exception from a
// route ever reaches the server (it becomes an HTTP 500 error envelope).
//
// The front and what it refers to must outlive the server's threads.

#ifndef OBOLO_SANDBOX_ROUTE_FRONT_H_
#define OBOLO_SANDBOX_ROUTE_FRONT_H_

#include <httplib.h>

#include <functional>
#include <string>

#include "sandbox/answer.h"
#include "sandbox/fault_plan.h"
#include "sandbox/request_log.h"
#include "sandbox/stop_signal.h"

namespace obolo::sandbox {

class RouteFront {
 public:
  using Handler = std::function<Answer(const Call&)>;
  enum class Method { kGet, kPost, kPut };

  RouteFront(RequestLog& log, FaultPlan& faults, StopSignal& stop);

  // Serves `path` (an exact path; the query is not part of it) for `method`.
  void serve(httplib::Server& server, Method method, const std::string& path, Envelope envelope,
             Handler handler);
  // Answers what no route takes (unknown paths, wrong methods, requests the
  // HTTP parser refused) with a JSON error envelope and the server's status.
  void serveErrors(httplib::Server& server);

 private:
  void handle(const httplib::Request& request, httplib::Response& response, const std::string& path,
              Envelope envelope, const Handler& handler);

  RequestLog& log_;
  FaultPlan& faults_;
  StopSignal& stop_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_ROUTE_FRONT_H_
