// The libcurl session against a bare TLS server of the test's own, which
// closes every connection after one answer and tells whether each handshake
// resumed an earlier TLS session.
//
// The session reads OBOLO_CA_FILE once per process, so each test case needs a
// process of its own, as CTest runs them.

#include "platform/curl_http_session.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/certificate.h"
#include "support/loopback_origin.h"

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
      {
        // Recorded before the answer goes out: the client may ask as soon as
        // it has the answer.
        std::lock_guard<std::mutex> lock(mutex_);
        resumed_.push_back(SSL_session_reused(ssl) == 1);
      }
      const std::string answer = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 2\r\n\r\nok";
      SSL_write(ssl, answer.data(), static_cast<int>(answer.size()));
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

// Sends the request and waits for its outcome.
HttpOutcome Send(HttpSession& session, HttpRequest request) {
  auto promise = std::make_shared<std::promise<HttpOutcome>>();
  auto outcome = promise->get_future();
  session.dataTask(std::move(request), [promise](HttpOutcome result) { promise->set_value(std::move(result)); });
  if (outcome.wait_for(std::chrono::seconds(10)) != std::future_status::ready) return {};
  return outcome.get();
}

HttpOutcome Get(HttpSession& session, const std::string& url) {
  HttpRequest request;
  request.url = url;
  return Send(session, std::move(request));
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

// Bytes this process has read from files so far (every thread's).
long long BytesReadFromFiles() {
  std::ifstream io("/proc/self/io");
  std::string key;
  long long value = 0;
  while (io >> key >> value) {
    if (key == "rchar:") return value;
  }
  return -1;
}

// Without OBOLO_CA_FILE the system's store decides: a self-signed server is
// refused, and the store's bundle (hundreds of certificates) is parsed for
// the first connection only, not again for every new one.
TEST(CurlHttpSessionTest, TheSystemStoreRefusesAStrangerAndIsReadOnceForManyConnections) {
  unsetenv("OBOLO_CA_FILE");
  CURL* probe = curl_easy_init();
  char* bundle = nullptr;
  curl_easy_getinfo(probe, CURLINFO_CAINFO, &bundle);
  const std::string bundle_file = bundle != nullptr ? bundle : "";
  curl_easy_cleanup(probe);
  std::error_code error;
  const auto bundle_size = std::filesystem::file_size(bundle_file, error);
  ASSERT_FALSE(error) << "libcurl's certificate bundle " << bundle_file << " is missing (package ca-certificates)";

  OneShotTlsServer server(3, /*resumable=*/false);
  ASSERT_TRUE(server.ready());
  CurlHttpSession session;
  const HttpOutcome first = Get(session, server.url());
  EXPECT_FALSE(first.body);
  EXPECT_FALSE(first.errorDescription.empty());

  const long long before = BytesReadFromFiles();
  for (int i = 0; i < 2; ++i) {
    const HttpOutcome outcome = Get(session, server.url());
    EXPECT_FALSE(outcome.body) << "connection " << i + 2 << " trusted a self-signed certificate";
  }
  const long long read = BytesReadFromFiles() - before;
  EXPECT_LT(read, static_cast<long long>(bundle_size) / 2)
      << "two new connections read " << read << " bytes from files; the bundle is " << bundle_size;
}

// A field holding CR, LF or NUL would end its header line where the value
// says; the session sends no byte of such a request.
TEST(CurlHttpSessionTest, AHeaderFieldThatWouldBreakItsLineIsRefusedBeforeAnyByteGoesOut) {
  testing::LoopbackOrigin origin(/*https=*/false);
  ASSERT_TRUE(origin.start());
  CurlHttpSession session;
  const struct {
    std::string name, value;
    bool sendable;
  } fields[] = {
      {"Authorization", "Bearer a.b.c", true},
      {"Authorization", "Bearer a.b.c\r\nX-Injected: yes", false},
      {"Authorization", "Bearer a.b.c\nX-Injected: yes", false},
      {"Authorization", "Bearer a.b.c\rX-Injected: yes", false},
      {"Authorization", std::string("Bearer a.b.c") + '\0' + "X-Injected: yes", false},
      {"X-Injected: yes\r\nAuthorization", "Bearer a.b.c", false},
  };
  for (const auto& field : fields) {
    SCOPED_TRACE(::testing::PrintToString(field.name + ": " + field.value));
    origin.clearRequests();
    HttpRequest request;
    request.method = "PUT";
    request.url = origin.baseUrl() + "/v2/obid/acceptBid";
    request.body = "{}";
    request.setValue(field.value, field.name);
    const HttpOutcome outcome = Send(session, std::move(request));
    if (field.sendable) {
      EXPECT_EQ(outcome.error, TransportError::kNone) << outcome.errorDescription;
      ASSERT_EQ(origin.requests().size(), 1u);
      EXPECT_EQ(origin.requests()[0].header("Authorization"), "Bearer a.b.c");
    } else {
      EXPECT_EQ(outcome.error, TransportError::kInvalidHeader);
      EXPECT_FALSE(outcome.response || outcome.body);
      EXPECT_TRUE(origin.requests().empty());
    }
  }
}

// The cap holds whether the answer announces its length or streams chunks.
TEST(CurlHttpSessionTest, ABodyPastTheRequestsCapEndsTheTransferWithoutABody) {
  testing::LoopbackOrigin origin(/*https=*/false);
  ASSERT_TRUE(origin.start());
  origin.setHandler([](const httplib::Request& request, httplib::Response& response) {
    const auto size = static_cast<std::size_t>(std::stoul(request.get_param_value("size")));
    if (!request.has_param("chunked")) {
      response.set_content(std::string(size, 'x'), "text/plain");
      return;
    }
    response.set_chunked_content_provider("text/plain", [size](std::size_t offset, httplib::DataSink& sink) {
      const std::string chunk(std::min<std::size_t>(300, size - offset), 'x');
      sink.write(chunk.data(), chunk.size());
      if (offset + chunk.size() == size) sink.done();
      return true;
    });
  });
  CurlHttpSession session;
  const struct {
    std::size_t size;
    bool chunked, fits;
  } cases[] = {{1000, false, true}, {1001, false, false}, {1000, true, true}, {1001, true, false},
               {100000, true, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.size) + (c.chunked ? " bytes in chunks" : " bytes"));
    HttpRequest request;
    request.url = origin.baseUrl() + "/answer?size=" + std::to_string(c.size) + (c.chunked ? "&chunked=1" : "");
    request.maxBodyBytes = 1000;
    const HttpOutcome outcome = Send(session, std::move(request));
    if (c.fits) {
      ASSERT_TRUE(outcome.body) << outcome.errorDescription;
      EXPECT_EQ(outcome.body->size(), c.size);
    } else {
      EXPECT_EQ(outcome.error, TransportError::kResponseTooLarge) << outcome.errorDescription;
      EXPECT_FALSE(outcome.body);
    }
  }
}

// A 3xx answer is delivered as it came unless the request allows hops, and
// only a GET ever takes one.
TEST(CurlHttpSessionTest, ARequestTakesOnlyTheRedirectsItAllows) {
  testing::LoopbackOrigin origin(/*https=*/false);
  ASSERT_TRUE(origin.start());
  origin.setHandler([](const httplib::Request& request, httplib::Response& response) {
    if (request.path == "/moved") {
      response.status = 307;
      response.set_header("Location", "/here");
      response.set_content(R"({"moved":true})", "application/json");
    } else {
      response.set_content("here", "text/plain");
    }
  });
  CurlHttpSession session;
  const struct {
    const char* method;
    int maxRedirects;
    int status;
    const char* body;
    std::size_t requests;
  } cases[] = {
      {"GET", 0, 307, R"({"moved":true})", 1},
      {"POST", 0, 307, R"({"moved":true})", 1},
      {"PUT", 5, 307, R"({"moved":true})", 1},
      {"GET", 1, 200, "here", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.method) + " allowing " + std::to_string(c.maxRedirects));
    origin.clearRequests();
    HttpRequest request;
    request.method = c.method;
    request.url = origin.baseUrl() + "/moved";
    request.maxRedirects = c.maxRedirects;
    if (request.method != "GET") request.body = "{}";
    const HttpOutcome outcome = Send(session, std::move(request));
    ASSERT_TRUE(outcome.response && outcome.body) << outcome.errorDescription;
    EXPECT_EQ(outcome.response->statusCode, c.status);
    EXPECT_EQ(*outcome.body, c.body);
    EXPECT_EQ(origin.requests().size(), c.requests);
    EXPECT_EQ(outcome.response->url, origin.baseUrl() + (c.status == 307 ? "/moved" : "/here"));
  }
}

}  // namespace
}  // namespace obolo
