// obolo-bench-trust-store, figure 15: what a new TLS connection costs the
// client when it checks the server against the system's trust store, as the
// kit does in production (no OBOLO_CA_FILE). A program of its own, since the
// other benchmark programs trust the sandbox's certificate file instead.
//
// The server is a loopback TLS server with a self-signed certificate that
// the system does not trust, so every attempt ends where the certificate is
// checked: after the store has been read, before any request. Each attempt is
// a new connection. Measured, per attempt:
//
//   kit           the kit's HTTP session;
//   bare default  bare libcurl with its own trust settings (its bundle file
//                 and the directory beside it), which parses the whole bundle
//                 for every connection;
//   bare one file bare libcurl on one multi handle trusting the bundle file
//                 alone, which keeps the parsed store: the floor.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "platform/curl_http_session.h"
#include "sandbox/certificate.h"

namespace obolo::bench {
namespace {

// Accepts connections and starts a handshake on each until destroyed.
class UntrustedTlsServer {
 public:
  UntrustedTlsServer() {
    std::string error;
    certificate_ = sandbox::SelfSignedCertificate::Create(&error);
    if (!certificate_) return;
    context_ = SSL_CTX_new(TLS_server_method());
    SSL_CTX_use_certificate(context_, certificate_->certificate());
    SSL_CTX_use_PrivateKey(context_, certificate_->key());
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener_, 64) != 0) return;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] {
      for (;;) {
        const int connection = accept(listener_, nullptr, nullptr);
        if (connection < 0) return;
        SSL* ssl = SSL_new(context_);
        SSL_set_fd(ssl, connection);
        SSL_accept(ssl);  // ends when the client refuses the certificate
        SSL_free(ssl);
        close(connection);
      }
    });
  }
  ~UntrustedTlsServer() {
    if (listener_ >= 0) shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    if (listener_ >= 0) close(listener_);
    SSL_CTX_free(context_);
  }

  bool ready() const { return port_ != 0; }
  std::string url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/"; }

 private:
  std::unique_ptr<sandbox::SelfSignedCertificate> certificate_;
  SSL_CTX* context_ = nullptr;
  int listener_ = -1;
  int port_ = 0;
  std::thread thread_;
};

UntrustedTlsServer& Server() {
  static auto* server = new UntrustedTlsServer();
  return *server;
}

void BM_TrustStore_Kit(benchmark::State& state) {
  if (!Server().ready()) return state.SkipWithError("no TLS server");
  static CurlHttpSession* session = new CurlHttpSession();
  for (auto _ : state) {
    auto done = std::make_shared<std::promise<bool>>();
    auto refused = done->get_future();
    HttpRequest request;
    request.url = Server().url();
    session->dataTask(std::move(request), [done](HttpOutcome outcome) { done->set_value(!outcome.body); });
    if (!refused.get()) return state.SkipWithError("the untrusted server was trusted");
  }
}

// Bare libcurl on one multi handle, as the kit drives it; `one_file` trusts
// the bundle file alone instead of libcurl's defaults.
void BareAttempts(benchmark::State& state, bool one_file) {
  if (!Server().ready()) return state.SkipWithError("no TLS server");
  CURLM* multi = curl_multi_init();
  std::string bundle;
  {
    CURL* probe = curl_easy_init();
    char* file = nullptr;
    curl_easy_getinfo(probe, CURLINFO_CAINFO, &file);
    if (file != nullptr) bundle = file;
    curl_easy_cleanup(probe);
  }
  const std::string url = Server().url();
  for (auto _ : state) {
    CURL* easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    if (one_file) {
      curl_easy_setopt(easy, CURLOPT_CAINFO, bundle.c_str());
      curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    }
    curl_multi_add_handle(multi, easy);
    int running = 1;
    while (running > 0) {
      curl_multi_perform(multi, &running);
      if (running > 0) curl_multi_poll(multi, nullptr, 0, 100, nullptr);
    }
    int queued = 0;
    CURLMsg* message = curl_multi_info_read(multi, &queued);
    const bool refused = message != nullptr && message->data.result != CURLE_OK;
    curl_multi_remove_handle(multi, easy);
    curl_easy_cleanup(easy);
    if (!refused) {
      state.SkipWithError("the untrusted server was trusted");
      break;
    }
  }
  curl_multi_cleanup(multi);
}

void BM_TrustStore_BareDefaults(benchmark::State& state) { BareAttempts(state, false); }
void BM_TrustStore_BareOneFile(benchmark::State& state) { BareAttempts(state, true); }

BENCHMARK(BM_TrustStore_Kit)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrustStore_BareDefaults)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrustStore_BareOneFile)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace obolo::bench

int main(int argc, char** argv) {
  unsetenv("OBOLO_CA_FILE");  // the system's store, as in production
  curl_global_init(CURL_GLOBAL_DEFAULT);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
