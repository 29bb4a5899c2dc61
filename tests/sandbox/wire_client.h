// A plain libcurl client for the sandbox's tests: one request, one blocking
// transfer on a fresh connection, everything the client observed returned.
// Independent of the kit's own HTTP session on purpose, so the sandbox is
// checked against a client that shares none of its assumptions.

#ifndef OBOLO_TESTS_SANDBOX_WIRE_CLIENT_H_
#define OBOLO_TESTS_SANDBOX_WIRE_CLIENT_H_

#include <curl/curl.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sandbox/sandbox.h"

namespace obolo::sandbox::testing {

struct WireRequest {
  std::string method = "POST";
  std::string url{};
  // Header lines exactly as they go on the wire, e.g. "Content-Type: application/json".
  std::vector<std::string> headers{};
  std::string body{};
  // The PEM file to trust; empty trusts the system's store only.
  std::string caFile{};
  std::chrono::milliseconds timeout{20'000};
};

struct WireResponse {
  CURLcode code = CURLE_OK;
  // 0 when no status line arrived.
  long status = 0;
  std::string contentType;
  // Where a redirect answer points (its Location, made absolute); empty otherwise.
  std::string location{};
  std::string body{};
  std::string error;
  std::chrono::milliseconds elapsed{0};

  // The body as JSON; a discarded value when it is not JSON.
  nlohmann::json json() const { return nlohmann::json::parse(body, nullptr, false); }
};

WireResponse Send(const WireRequest& request);

// JSON calls to one sandbox, as the kit makes them: Content-Type and Accept
// set, and a bearer token when one is given.
class SandboxClient {
 public:
  explicit SandboxClient(const Sandbox& sandbox) : sandbox_(sandbox) {}

  WireResponse call(const std::string& method, const std::string& path, const std::string& body,
                    const std::string& bearer = "") const;
  WireResponse call(const std::string& method, const std::string& path, const nlohmann::json& body,
                    const std::string& bearer = "") const {
    return call(method, path, body.dump(), bearer);
  }
  WireResponse get(const std::string& path) const;

 private:
  const Sandbox& sandbox_;
};

}  // namespace obolo::sandbox::testing

#endif  // OBOLO_TESTS_SANDBOX_WIRE_CLIENT_H_
