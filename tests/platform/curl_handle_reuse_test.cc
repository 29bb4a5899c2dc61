// The session keeps finished transfers' easy handles for later ones: nothing
// of one request may reach the next. Over real sockets to the sandbox, which
// records each request as it arrived.

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

#include "platform/http_session.h"
#include "sandbox/paths.h"
#include "support/sandbox_environment.h"

OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

// Sends the request and waits for its outcome.
HttpOutcome Transfer(HttpRequest request) {
  std::mutex mutex;
  std::condition_variable done;
  std::optional<HttpOutcome> outcome;
  HttpSession::shared()->dataTask(std::move(request), [&](HttpOutcome result) {
    std::lock_guard<std::mutex> lock(mutex);
    outcome = std::move(result);
    done.notify_all();
  });
  std::unique_lock<std::mutex> lock(mutex);
  done.wait_for(lock, std::chrono::seconds(15), [&] { return outcome.has_value(); });
  return outcome.value_or(HttpOutcome{});
}

TEST(CurlHandleReuseTest, EachRequestCarriesOnlyItsOwnMethodHeadersAndBody) {
  sandbox::Sandbox& sandbox = testing::SandboxEnvironment::sandbox();
  const std::string base = sandbox.baseUrl();
  struct Sent {
    const char* method;
    const char* path;
    std::vector<std::pair<const char*, const char*>> headers;
    const char* body;
  };
  const Sent sent[] = {
      {"PUT", sandbox::kAcceptBidPath, {{"Content-Type", "Application/json"}, {"Authorization", "Bearer t"}}, "{\"a\":1}"},
      {"POST", sandbox::kCreateLoggedOutBidPath, {{"Content-Type", "application/json"}}, "{}"},
      {"GET", sandbox::kPublisherLogoPath, {}, ""},
      {"PUT", sandbox::kLogoutDevicePath, {{"Content-Type", "text/plain"}, {"Accept", "application/json"}}, "{\"b\":2}"},
      {"POST", sandbox::kCreateLoggedOutBidPath, {{"Content-Type", "application/json; charset=utf-8"}}, "{\"c\":3}"},
  };
  // Twice round, so every transfer after the first few runs on a kept handle.
  for (int round = 0; round < 2; ++round) {
    sandbox.clearRequests();
    for (const Sent& s : sent) {
      HttpRequest request;
      request.method = s.method;
      request.url = base + s.path;
      for (const auto& [name, value] : s.headers) request.setValue(value, name);
      request.body = s.body;
      ASSERT_TRUE(Transfer(std::move(request)).body.has_value()) << s.method << " " << s.path;
    }
    const auto received = sandbox.requests();
    ASSERT_EQ(received.size(), std::size(sent));
    for (size_t i = 0; i < received.size(); ++i) {
      SCOPED_TRACE(std::string(sent[i].method) + " " + sent[i].path + ", round " + std::to_string(round));
      EXPECT_EQ(received[i].method, sent[i].method);
      EXPECT_EQ(received[i].body, sent[i].body);
      for (const char* name : {"Authorization", "Content-Type", "Accept"}) {
        std::optional<std::string> expected;
        for (const auto& [sent_name, value] : sent[i].headers) {
          if (std::string_view(sent_name) == name) expected = value;
        }
        EXPECT_EQ(received[i].header(name), expected) << name;
      }
    }
  }
}

}  // namespace
}  // namespace obolo
