#include "sandbox/route_front.h"

#include <exception>
#include <utility>

#include "sandbox/connection_closer.h"
#include "sandbox/fault_answers.h"

namespace obolo::sandbox {
namespace {

// cpp-httplib takes route patterns as regular expressions.
std::string ExactPattern(const std::string& path) {
  std::string pattern;
  for (char c : path) {
    if (std::string_view("\\^$.|?*+()[]{}").find(c) != std::string_view::npos) pattern += '\\';
    pattern += c;
  }
  return pattern;
}

// cpp-httplib adds these to a request's header fields itself.
bool AddedByServer(const std::string& name) {
  return name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT";
}

RecordedRequest Record(const httplib::Request& request) {
  RecordedRequest record;
  record.method = request.method;
  record.path = request.path;
  if (auto question = request.target.find('?'); question != std::string::npos) {
    record.query = request.target.substr(question + 1);
  }
  for (const auto& [name, value] : request.headers) {
    if (!AddedByServer(name)) record.headers.emplace_back(name, value);
  }
  record.body = request.body;
  return record;
}

void Write(const Answer& answer, httplib::Response& response) {
  response.status = answer.status;
  if (!answer.body.empty() || !answer.contentType.empty())
    response.set_content(answer.body, answer.contentType);
}

Answer InternalError(const std::string& message) {
  return Answer::FromJson(500, ErrorEnvelope(500, "Internal error: " + message));
}

}  // namespace

RouteFront::RouteFront(RequestLog& log, FaultPlan& faults, StopSignal& stop)
    : log_(log), faults_(faults), stop_(stop) {}

void RouteFront::serve(httplib::Server& server, Method method, const std::string& path, Envelope envelope,
                       Handler handler) {
  auto route = [this, path, envelope, handler = std::move(handler)](const httplib::Request& request,
                                                                    httplib::Response& response) {
    handle(request, response, path, envelope, handler);
  };
  const std::string pattern = ExactPattern(path);
  switch (method) {
    case Method::kGet:
      server.Get(pattern, route);
      break;
    case Method::kPost:
      server.Post(pattern, route);
      break;
    case Method::kPut:
      server.Put(pattern, route);
      break;
  }
}

void RouteFront::serveErrors(httplib::Server& server) {
  server.set_error_handler(
      httplib::Server::HandlerWithResponse([](const httplib::Request&, httplib::Response& response) {
        // Routes write their own error bodies; only the server's bare errors are
        // dressed here.
        if (!response.body.empty()) return httplib::Server::HandlerResponse::Unhandled;
        const char* message = response.status == 404 ? "No such route" : "The request cannot be served";
        Write(Answer::FromJson(response.status, ErrorEnvelope(response.status, message)), response);
        return httplib::Server::HandlerResponse::Handled;
      }));
  server.set_exception_handler([](const httplib::Request&, httplib::Response& response, std::exception_ptr) {
    Write(InternalError("unexpected failure"), response);
  });
}

void RouteFront::handle(const httplib::Request& request, httplib::Response& response, const std::string& path,
                        Envelope envelope, const Handler& handler) {
  try {
    log_.append(Record(request));

    if (std::optional<Fault> fault = faults_.take(path)) {
      if (fault->kind == FaultKind::kCloseWithoutResponse) {
        if (ShutdownConnection(request.local_port, request.remote_port)) {
          response.status = 500;  // written into a shut-down socket: nothing arrives
          response.set_content("{}", "application/json");
        } else {
          Write(InternalError("the connection could not be closed"), response);
        }
        return;
      }
      if (fault->kind == FaultKind::kSlowAnswer) {
        stop_.waitFor(fault->delay);
      } else if (std::optional<Answer> answer = FaultAnswer(*fault, envelope)) {
        Write(*answer, response);
        if (!fault->location.empty()) response.set_header("Location", fault->location);
        return;
      }
    }

    Call call;
    call.body = request.body;
    call.authorization = request.get_header_value("Authorization");
    Write(handler(call), response);
  } catch (const std::exception& failure) {
    Write(InternalError(failure.what()), response);
  } catch (...) {
    Write(InternalError("unknown failure"), response);
  }
}

}  // namespace obolo::sandbox
