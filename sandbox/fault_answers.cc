#include "sandbox/fault_answers.h"

namespace obolo::sandbox {
namespace {

constexpr char kHtmlErrorPage[] =
    "<!DOCTYPE html>\n<html><head><title>502 Bad Gateway</title></head>\n"
    "<body><h1>502 Bad Gateway</h1><p>The upstream server did not answer.</p></body></html>\n";

// The route's envelope, well formed except for one member that has the wrong
// JSON type.
std::string WrongTypeBody(Envelope envelope) {
  switch (envelope) {
    case Envelope::kOboloData:
      return R"({"success":true,"message":"Bid created","data":{"oboloBidId":"12","publisherId":7}})";
    case Envelope::kNextTokenData:
      return R"({"success":true,"message":"Access token refreshed","statusCode":200,"data":{"deviceId":"1"}})";
    case Envelope::kBalanceAndArticleData:
      return R"({"success":true,"message":"Balance","statusCode":200,"data":{"balance":"10.0","currency":"EUR"}})";
    case Envelope::kLogoutData:
      return R"({"success":true,"message":"Device logged out","data":"true","statusCode":200})";
    case Envelope::kLoginJson:
    case Envelope::kNone:
      return R"({"success":"true","message":1})";
  }
  return "{}";
}

}  // namespace

std::optional<Answer> FaultAnswer(const Fault& fault, Envelope envelope) {
  switch (fault.kind) {
    case FaultKind::kServerError:
      return Answer{500, "application/json", "{}"};
    case FaultKind::kHtmlErrorPage:
      return Answer{502, "text/html; charset=utf-8", kHtmlErrorPage};
    case FaultKind::kMalformedJson:
      return Answer{200, "application/json",
                    R"({"success":true,"message":"Bid created","data":{"oboloBidId":)"};
    case FaultKind::kWrongType:
      return Answer{200, "application/json", WrongTypeBody(envelope)};
    case FaultKind::kFailureWithMessage: {
      Json json;
      json["success"] = false;
      json["message"] = fault.message.empty() ? "The service refused the request" : fault.message;
      return Answer::FromJson(200, json);
    }
    case FaultKind::kFailureWithoutMessage:
      return Answer{200, "application/json", R"({"success":false})"};
    case FaultKind::kEmptyBody:
      return Answer{200, "", ""};
    case FaultKind::kCustomAnswer:
      return Answer{fault.status, fault.contentType, fault.body};
    case FaultKind::kCloseWithoutResponse:
    case FaultKind::kSlowAnswer:
      return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace obolo::sandbox
