// Whatever a client sends the sandbox's JSON routes (any body, any
// Authorization value, with or without a session the service issued) gets an
// answer from the route itself: a JSON object that is either a success under
// HTTP 200 or a refusal whose statusCode is its HTTP status. Nothing throws.
//
// Input: byte 0 picks the route, byte 1 the bearer (the input's first line, a
// valid access token, or a valid token with the first line after it); the
// first line is the Authorization value, the rest the body.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "sandbox/api_service.h"
#include "sandbox/default_world.h"
#include "sandbox/login_service.h"
#include "sandbox/seed_world.h"
#include "sandbox/world.h"

namespace {

using obolo::sandbox::Answer;
using obolo::sandbox::Call;

void Check(bool condition) {
  if (!condition) std::abort();
}

void CheckAnswer(const Answer& answer) {
  Check(answer.contentType == "application/json");
  const auto json = nlohmann::json::parse(answer.body, nullptr, /*allow_exceptions=*/false);
  Check(json.is_object());
  const auto success = json.find("success");
  Check(success != json.end() && success->is_boolean());
  if (answer.status == 200) {
    Check(success->get<bool>());
    return;
  }
  Check(answer.status >= 400 && answer.status <= 599);
  Check(!success->get<bool>());
  const auto status = json.find("statusCode");
  Check(status != json.end() && status->is_number_integer() && status->get<int>() == answer.status);
  const auto message = json.find("message");
  Check(message != json.end() && message->is_string() && !message->get<std::string>().empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  const std::size_t newline = rest.find('\n');
  const std::string_view line = rest.substr(0, newline);
  rest = newline == std::string_view::npos ? std::string_view() : rest.substr(newline + 1);

  // A fresh world each time, so every input is judged on its own.
  obolo::sandbox::World world(std::chrono::hours(1), std::chrono::hours(24));
  obolo::sandbox::SeedDefaultWorld(world);
  world.setIssuer("https://127.0.0.1:8443");
  obolo::sandbox::ApiService api(world, [] { return std::string("https://127.0.0.1:8443/image.png"); });
  obolo::sandbox::LoginService login(world);
  const auto session = world.createSession(obolo::sandbox::seed::kReaderEmail);
  Check(session.has_value());

  Call call;
  call.body = std::string(rest);
  switch (data[1] % 3) {
    case 0: call.authorization = std::string(line); break;
    case 1: call.authorization = "Bearer " + session->accessToken; break;
    default: call.authorization = "Bearer " + session->accessToken + std::string(line); break;
  }
  using Route = std::function<Answer(const Call&)>;
  const Route routes[] = {
      [&](const Call& c) { return api.createLoggedOutBid(c); },
      [&](const Call& c) { return api.createLoggedInBid(c); },
      [&](const Call& c) { return api.customerBid(c); },
      [&](const Call& c) { return api.nextAccessToken(c); },
      [&](const Call& c) { return api.acceptBid(c); },
      [&](const Call& c) { return api.balanceAndArticles(c); },
      [&](const Call& c) { return api.logoutDevice(c); },
      [&](const Call& c) { return login.requestCode(c); },
      [&](const Call& c) { return login.verifyCode(c); },
  };
  CheckAnswer(routes[data[0] % std::size(routes)](call));
  (void)obolo::sandbox::BearerToken(line);
  return 0;
}
