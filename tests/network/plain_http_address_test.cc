// An address override that names plain HTTP would send the reader's keys and
// tokens in clear. Every call then behaves as with an invalid address: no
// request reaches the plain-HTTP server, no closure runs, and one log line
// per call says why.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <functional>
#include <future>
#include <string>

#include "network/network_manager.h"
#include "platform/http_session.h"
#include "support/call_probe.h"
#include "support/log_capture.h"
#include "support/loopback_origin.h"

namespace obolo {
namespace {

using testing::CallProbe;

template <class Envelope, class Param>
std::function<int()> Issue(void (NetworkManager::*method)(const Param&, Completion<Envelope>, OnFailure) const) {
  CallProbe<Envelope> probe;
  (NetworkManager::shared().*method)(Param{}, probe.completion(), probe.onFailure());
  return [probe] { return probe.calls(); };
}

// Points the kit at a plain-HTTP server through the override (read once, at
// the process's first call: each test case runs in a process of its own),
// issues the seven calls and checks that none went out or called back.
void ExpectNothingSentOverPlainHttp(bool upperCaseScheme) {
  testing::LoopbackOrigin plain(false);
  ASSERT_TRUE(plain.start());
  const std::string base = upperCaseScheme ? "HTTP" + plain.baseUrl().substr(4) : plain.baseUrl();
  setenv("OBOLO_API_BASE_URL", base.c_str(), 1);
  testing::LogCapture log;
  const std::function<int()> calls[] = {
      Issue(&NetworkManager::createLoggedOutBid), Issue(&NetworkManager::createLoggedInBid),
      Issue(&NetworkManager::customerBid),        Issue(&NetworkManager::getNextAccessToken),
      Issue(&NetworkManager::acceptBid),          Issue(&NetworkManager::getBalanceAndArticles),
      Issue(&NetworkManager::logout),
  };

  // A transfer of its own to the same server: once its answer is in, any
  // request the calls had made would have arrived before it.
  std::promise<int> witness;
  HttpRequest request;
  request.url = plain.baseUrl() + "/witness";
  HttpSession::shared()->dataTask(request, [&witness](HttpOutcome outcome) {
    witness.set_value(outcome.response ? outcome.response->statusCode : -1);
  });
  ASSERT_EQ(witness.get_future().get(), 200);

  const auto received = plain.requests();
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0].path, "/witness");
  for (const auto& closures : calls) EXPECT_EQ(closures(), 0);
  const auto lines = log.lines();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) {
                            return line.starts_with("Not sent: the service address is not an https address");
                          }),
            7);
}

TEST(PlainHttpAddressTest, NoCallGoesOutOverPlainHttp) { ExpectNothingSentOverPlainHttp(false); }

// The scheme is compared without regard to case.
TEST(PlainHttpAddressTest, NoCallGoesOutOverPlainHttpInUpperCase) { ExpectNothingSentOverPlainHttp(true); }

}  // namespace
}  // namespace obolo
