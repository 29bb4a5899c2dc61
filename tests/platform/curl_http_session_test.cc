// The libcurl session against a bare TLS server of the test's own, which
// closes every connection after one answer and tells whether each handshake
// resumed an earlier TLS session.
//
// The session reads OBOLO_CA_FILE once per process, so each test case needs a
// process of its own, as CTest runs them.

#include "platform/curl_http_session.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/certificate.h"

namespace obolo {
namespace {

class OneShotTlsServer {
 public:
  // Serves `connections` connections, one after the other. A server that is
  // not `resumable` makes a full handshake, certificate check included, on
  // every connection.
  explicit OneShotTlsServer(int connections, bool resumable = true) {
    std::string error;
    certificate_ = sandbox::SelfSignedCertificate::Create(&error);
    if (!certificate_) return;
    context_ = SSL_CTX_new(TLS_server_method());
    SSL_CTX_use_certificate(context_, certificate_->certificate());
    SSL_CTX_use_PrivateKey(context_, certificate_->key());
    if (!resumable) {
      SSL_CTX_set_session_cache_mode(context_, SSL_SESS_CACHE_OFF);
      SSL_CTX_set_options(context_, SSL_OP_NO_TICKET);
      SSL_CTX_set_num_tickets(context_, 0);
    }

    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener_, 4) != 0) return;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this, connections] {
      for (int i = 0; i < connections; ++i) ServeOne();
    });
  }

  ~OneShotTlsServer() {
    // Ends an accept() still waiting for a connection that a failed test
    // never made.
    if (listener_ >= 0) shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    if (listener_ >= 0) close(listener_);
    SSL_CTX_free(context_);
  }

  bool ready() const { return port_ != 0; }
  std::string url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/"; }
  const std::string& caFile() const { return certificate_->pemFile(); }

  // For each connection served so far: whether its handshake resumed a session.
  std::vector<bool> resumed() {
    std::lock_guard<std::mutex> lock(mutex_);
    return resumed_;
  }

 private:
  void ServeOne() {
    const int connection = accept(listener_, nullptr, nullptr);
    if (connection < 0) return;
    SSL* ssl = SSL_new(context_);
    SSL_set_fd(ssl, connection);
    if (SSL_accept(ssl) == 1) {
      std::string request;
      char buffer[4096];
      while (request.find("\r\n\r\n") == std::string::npos) {
        const int count = SSL_read(ssl, buffer, sizeof buffer);
        if (count <= 0) break;
        request.append(buffer, static_cast<size_t>(count));
      }
      const std::string answer = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 2\r\n\r\nok";
      SSL_write(ssl, answer.data(), static_cast<int>(answer.size()));
      {
        std::lock_guard<std::mutex> lock(mutex_);
        resumed_.push_back(SSL_session_reused(ssl) == 1);
      }
      SSL_shutdown(ssl);
    }
    SSL_free(ssl);
    close(connection);
  }

  std::unique_ptr<sandbox::SelfSignedCertificate> certificate_;
  SSL_CTX* context_ = nullptr;
  int listener_ = -1;
  int port_ = 0;
  std::thread thread_;
  std::mutex mutex_;
  std::vector<bool> resumed_;
};

// Sends one GET and waits for its outcome.
HttpOutcome Get(HttpSession& session, const std::string& url) {
  auto promise = std::make_shared<std::promise<HttpOutcome>>();
  auto outcome = promise->get_future();
  HttpRequest request;
  request.url = url;
  session.dataTask(request, [promise](HttpOutcome result) { promise->set_value(std::move(result)); });
  if (outcome.wait_for(std::chrono::seconds(10)) != std::future_status::ready) return {};
  return outcome.get();
}

TEST(CurlHttpSessionTest, ANewConnectionResumesTheTlsSessionOfAnEarlierTransfer) {
  OneShotTlsServer server(3);
  ASSERT_TRUE(server.ready());
  setenv("OBOLO_CA_FILE", server.caFile().c_str(), 1);  // read once, at the session's first use
  CurlHttpSession session;

  for (int i = 0; i < 3; ++i) {
    const HttpOutcome outcome = Get(session, server.url());
    ASSERT_TRUE(outcome.body) << "transfer " << i << ": " << outcome.errorDescription;
    EXPECT_EQ(*outcome.body, "ok");
  }
  // The server closed each connection, so every transfer made a handshake;
  // all but the first resumed a session instead of starting over.
  EXPECT_EQ(server.resumed(), (std::vector<bool>{false, true, true}));
}

TEST(CurlHttpSessionTest, TheTrustedCertificateFileIsReadOnceForManyConnections) {
  OneShotTlsServer server(2, /*resumable=*/false);
  ASSERT_TRUE(server.ready());
  setenv("OBOLO_CA_FILE", server.caFile().c_str(), 1);
  CurlHttpSession session;
  ASSERT_TRUE(Get(session, server.url()).body);

  // Another certificate in the file now: a session that read the file again
  // for its second connection would no longer trust the server.
  std::string error;
  auto other = sandbox::SelfSignedCertificate::Create(&error);
  ASSERT_NE(other, nullptr) << error;
  std::filesystem::copy_file(other->pemFile(), server.caFile(), std::filesystem::copy_options::overwrite_existing);

  const HttpOutcome outcome = Get(session, server.url());
  EXPECT_TRUE(outcome.body) << outcome.errorDescription;
}

}  // namespace
}  // namespace obolo
