// Kept connections after the reader paused: the session reuses one the server
// still keeps, so a tap after half a minute costs no new TCP and TLS round
// trips, and never sends a request on one the server closed meanwhile, where
// the request would be lost.
//
// The session reads OBOLO_CA_FILE once per process, so each test case needs a
// process of its own, as CTest runs them.

#include <gtest/gtest.h>
#include <httplib.h>
#include <stdlib.h>

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/curl_http_session.h"
#include "sandbox/certificate.h"

namespace obolo {
namespace {

// An HTTPS server that keeps idle connections for a set time, then closes
// them as servers do (TLS's close notice, then the end of the stream), and
// notes the client port each request came from.
class KeptAliveServer {
 public:
  explicit KeptAliveServer(int keep_alive_seconds) {
    std::string error;
    certificate_ = sandbox::SelfSignedCertificate::Create(&error);
    if (!certificate_) return;
    server_ = std::make_unique<httplib::SSLServer>(certificate_->certificate(), certificate_->key());
    server_->set_keep_alive_timeout(keep_alive_seconds);
    server_->set_keep_alive_max_count(100);
    server_->Post("/call", [this](const httplib::Request& request, httplib::Response& response) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        ports_.push_back(request.remote_port);
      }
      response.set_content("{\"success\":true}", "application/json");
    });
    port_ = server_->bind_to_any_port("127.0.0.1");
    if (port_ <= 0) return;
    thread_ = std::thread([this] { server_->listen_after_bind(); });  // the port queues connections already
  }
  ~KeptAliveServer() {
    if (server_) server_->stop();
    if (thread_.joinable()) thread_.join();
  }

  bool ready() const { return port_ > 0; }
  std::string url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/call"; }
  const std::string& caFile() const { return certificate_->pemFile(); }
  // The client port of every request received, in order: one port, one connection.
  std::vector<int> ports() {
    std::lock_guard<std::mutex> lock(mutex_);
    return ports_;
  }

 private:
  std::unique_ptr<sandbox::SelfSignedCertificate> certificate_;
  std::unique_ptr<httplib::SSLServer> server_;
  int port_ = 0;
  std::thread thread_;
  std::mutex mutex_;
  std::vector<int> ports_;
};

// A POST with a body, as the service calls are: never sent twice.
bool Call(HttpSession& session, const std::string& url) {
  HttpRequest request;
  request.method = "POST";
  request.url = url;
  request.body = "{}";
  request.setValue("application/json", "Content-Type");
  auto promise = std::make_shared<std::promise<bool>>();
  auto answered = promise->get_future();
  session.dataTask(std::move(request), [promise](HttpOutcome outcome) {
    promise->set_value(outcome.body.has_value() && outcome.response && outcome.response->statusCode == 200);
  });
  return answered.wait_for(std::chrono::seconds(10)) == std::future_status::ready && answered.get();
}

TEST(CurlIdleReuseTest, AConnectionIdleForSecondsIsReusedWhileTheServerKeepsIt) {
  KeptAliveServer server(/*keep_alive_seconds=*/30);
  ASSERT_TRUE(server.ready());
  setenv("OBOLO_CA_FILE", server.caFile().c_str(), 1);
  CurlHttpSession session;

  ASSERT_TRUE(Call(session, server.url()));
  std::this_thread::sleep_for(std::chrono::milliseconds(4500));  // past the 4 s kept for busy moments
  ASSERT_TRUE(Call(session, server.url()));

  const auto ports = server.ports();
  ASSERT_EQ(ports.size(), 2u);
  EXPECT_EQ(ports[0], ports[1]) << "the second call opened a new connection";
}

TEST(CurlIdleReuseTest, AConnectionTheServerClosedWhileIdleIsNotUsedAndTheCallStillGoesThrough) {
  KeptAliveServer server(/*keep_alive_seconds=*/1);
  ASSERT_TRUE(server.ready());
  setenv("OBOLO_CA_FILE", server.caFile().c_str(), 1);
  CurlHttpSession session;

  ASSERT_TRUE(Call(session, server.url()));
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));  // the server closed it after 1 s
  EXPECT_TRUE(Call(session, server.url())) << "the call went out on the closed connection and was lost";

  const auto ports = server.ports();
  ASSERT_EQ(ports.size(), 2u) << "the server got the second call once";
  EXPECT_NE(ports[0], ports[1]);
}

}  // namespace
}  // namespace obolo
