#include "support/loopback_origin.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "sandbox/certificate.h"

namespace obolo::testing {
namespace {

const sandbox::SelfSignedCertificate& SharedCertificate() {
  static const std::unique_ptr<sandbox::SelfSignedCertificate> certificate = [] {
    std::string error;
    auto made = sandbox::SelfSignedCertificate::Create(&error);
    if (!made) std::abort();  // no HTTPS origin can be made: nothing to test with
    return made;
  }();
  return *certificate;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

LoopbackOrigin::LoopbackOrigin(bool https) : https_(https) {
  setHandler([](const httplib::Request&, httplib::Response& response) {
    response.set_content(std::string(R"({"success":true,"message":")") + kDefaultMessage + "\"}",
                         "application/json");
  });
}

LoopbackOrigin::~LoopbackOrigin() {
  if (server_) server_->stop();
  if (thread_.joinable()) thread_.join();
}

bool LoopbackOrigin::start() {
  if (https_) {
    const auto& certificate = SharedCertificate();
    server_ = std::make_unique<httplib::SSLServer>(certificate.certificate(), certificate.key());
  } else {
    server_ = std::make_unique<httplib::Server>();
  }
  if (!server_->is_valid()) return false;
  auto route = [this](const httplib::Request& request, httplib::Response& response) { serve(request, response); };
  server_->Get(".*", route);
  server_->Post(".*", route);
  server_->Put(".*", route);
  server_->Patch(".*", route);
  server_->Delete(".*", route);
  server_->Options(".*", route);
  server_->set_keep_alive_max_count(1);  // stopping never waits on an idle connection
  const int port = server_->bind_to_any_port("127.0.0.1");
  if (port <= 0) return false;
  base_url_ = std::string(https_ ? "https" : "http") + "://127.0.0.1:" + std::to_string(port);
  thread_ = std::thread([server = server_.get()] { server->listen_after_bind(); });
  // listen_after_bind() flags the server running just before it accepts.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!server_->is_running() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return server_->is_running();
}

void LoopbackOrigin::setHandler(Handler handler) {
  std::lock_guard<std::mutex> lock(mutex_);
  handler_ = std::move(handler);
}

std::vector<sandbox::RecordedRequest> LoopbackOrigin::requests() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

void LoopbackOrigin::clearRequests() {
  std::lock_guard<std::mutex> lock(mutex_);
  requests_.clear();
}

void LoopbackOrigin::serve(const httplib::Request& request, httplib::Response& response) {
  sandbox::RecordedRequest record;
  record.method = request.method;
  record.path = request.path;
  if (auto question = request.target.find('?'); question != std::string::npos) {
    record.query = request.target.substr(question + 1);
  }
  for (const auto& [name, value] : request.headers) record.headers.emplace_back(name, value);
  record.body = request.body;
  Handler handler;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(std::move(record));
    handler = handler_;
  }
  handler(request, response);
}

const std::string& LoopbackOrigin::CertificateFile() { return SharedCertificate().pemFile(); }

std::string LoopbackOrigin::TrustedFile(const std::string& otherPem) {
  static std::atomic<int> made{0};
  const std::filesystem::path directory = std::filesystem::path(CertificateFile()).parent_path();
  const std::string path = (directory / ("trusted-" + std::to_string(made++) + ".pem")).string();
  std::ofstream(path, std::ios::binary) << ReadFile(CertificateFile()) << "\n" << ReadFile(otherPem);
  return path;
}

}  // namespace obolo::testing
