#include "sandbox/sandbox.h"

#include <httplib.h>

#include <csignal>
#include <mutex>
#include <thread>
#include <utility>

#include "sandbox/api_service.h"
#include "sandbox/certificate.h"
#include "sandbox/fault_plan.h"
#include "sandbox/login_service.h"
#include "sandbox/request_log.h"
#include "sandbox/route_front.h"
#include "sandbox/seed_world.h"
#include "sandbox/stop_signal.h"
#include "sandbox/world.h"

namespace obolo::sandbox {
namespace {

constexpr char kHost[] = "127.0.0.1";

// A peer that closes its connection early makes a write raise SIGPIPE (TLS
// writes go through OpenSSL's plain write()); by default that ends the
// process. A program that chose its own disposition keeps it.
void IgnoreSigpipeUnlessHandled() {
  struct sigaction current {};
  if (sigaction(SIGPIPE, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    sigaction(SIGPIPE, &ignore, nullptr);
  }
}

void AddRoutes(httplib::Server& server, RouteFront& front, ApiService& api, LoginService& login) {
  using M = RouteFront::Method;
  auto bind = [](auto method, auto& service) {
    return [method, &service](const Call& call) { return (service.*method)(call); };
  };
  front.serve(server, M::kPost, kCreateLoggedOutBidPath, Envelope::kOboloData,
              bind(&ApiService::createLoggedOutBid, api));
  front.serve(server, M::kPost, kCreateLoggedInBidPath, Envelope::kOboloData,
              bind(&ApiService::createLoggedInBid, api));
  front.serve(server, M::kPost, kCustomerBidPath, Envelope::kOboloData, bind(&ApiService::customerBid, api));
  front.serve(server, M::kPut, kNextAccessTokenPath, Envelope::kNextTokenData,
              bind(&ApiService::nextAccessToken, api));
  front.serve(server, M::kPut, kAcceptBidPath, Envelope::kOboloData, bind(&ApiService::acceptBid, api));
  front.serve(server, M::kPost, kBalanceAndArticlePath, Envelope::kBalanceAndArticleData,
              bind(&ApiService::balanceAndArticles, api));
  front.serve(server, M::kPut, kLogoutDevicePath, Envelope::kLogoutData,
              bind(&ApiService::logoutDevice, api));

  front.serve(server, M::kGet, kLoginPagePath, Envelope::kNone,
              [](const Call&) { return LoginService::LoginPage(); });
  front.serve(server, M::kGet, kWindowModePath, Envelope::kNone,
              [](const Call&) { return LoginService::WindowModePage(); });
  front.serve(server, M::kGet, kPublisherLogoPath, Envelope::kNone,
              [](const Call&) { return LoginService::PublisherLogo(); });
  front.serve(server, M::kGet, kPublisherLogoJpegPath, Envelope::kNone,
              [](const Call&) { return LoginService::PublisherLogoJpeg(); });
  front.serve(server, M::kGet, kPublisherLogoWebpPath, Envelope::kNone,
              [](const Call&) { return LoginService::PublisherLogoWebp(); });
  front.serve(server, M::kGet, kPublisherLogoGifPath, Envelope::kNone,
              [](const Call&) { return LoginService::PublisherLogoGif(); });
  front.serve(server, M::kPost, kLoginCodePath, Envelope::kLoginJson,
              bind(&LoginService::requestCode, login));
  front.serve(server, M::kPost, kLoginVerifyPath, Envelope::kLoginJson,
              bind(&LoginService::verifyCode, login));
  front.serveErrors(server);
}

}  // namespace

struct Sandbox::Impl {
  explicit Impl(SandboxOptions options_in)
      : options(std::move(options_in)),
        world(options.accessTokenLifetime, options.refreshTokenLifetime),
        api(world, [this] { return addressOf(kPublisherLogoPath); }),
        login(world),
        front(log, faults, stop_signal) {
    if (options.seedDefaultWorld) SeedDefaultWorld(world);
  }

  std::string addressOf(const char* path) const {
    std::lock_guard lock(address_mutex);
    return base_url.empty() ? std::string() : base_url + path;
  }

  bool start();
  void stop();

  const SandboxOptions options;
  World world;
  RequestLog log;
  FaultPlan faults;
  StopSignal stop_signal;
  ApiService api;
  LoginService login;
  RouteFront front;

  // Running state; changed only by start() and stop() on the controlling
  // thread. Server threads never take `lifecycle_mutex`, so stop() may hold
  // it while it waits for them.
  std::mutex lifecycle_mutex;
  std::unique_ptr<SelfSignedCertificate> certificate;
  std::unique_ptr<httplib::Server> server;
  std::thread listener;

  // What callers on any thread read about the running service.
  mutable std::mutex address_mutex;
  std::string base_url;
  std::string ca_file;
  int port = 0;
  std::string error;
};

bool Sandbox::Impl::start() {
  std::lock_guard lifecycle(lifecycle_mutex);
  if (server) return true;
  auto fail = [this](std::string why) {
    std::lock_guard lock(address_mutex);
    error = std::move(why);
    return false;
  };

  IgnoreSigpipeUnlessHandled();
  std::unique_ptr<httplib::Server> candidate;
  if (options.https) {
    std::string why;
    certificate = SelfSignedCertificate::Create(&why);
    if (!certificate) return fail(why);
    candidate = std::make_unique<httplib::SSLServer>(certificate->certificate(), certificate->key());
  } else {
    candidate = std::make_unique<httplib::Server>();
  }
  if (!candidate->is_valid()) {
    certificate.reset();
    return fail("the HTTP server cannot be set up");
  }

  const std::size_t workers = static_cast<std::size_t>(std::max(2, options.workerThreads));
  candidate->new_task_queue = [workers] { return new httplib::ThreadPool(workers); };
  // An idle kept-alive connection is closed after keepAliveIdle, with TLS's
  // close notice. Idle connections hold a worker meanwhile, so stop() may
  // wait for them.
  candidate->set_keep_alive_timeout(options.keepAlive ? std::max<time_t>(1, options.keepAliveIdle.count()) : 1);
  candidate->set_keep_alive_max_count(
      options.keepAlive ? static_cast<std::size_t>(std::max(1, options.keepAliveMaxRequests)) : 1);
  candidate->set_tcp_nodelay(options.tcpNoDelay);  // see SandboxOptions
  // cpp-httplib's default listening options include SO_REUSEPORT, which lets
  // a second server bind a port that is already serving and then splits the
  // connections between the two. SO_REUSEADDR alone still allows a quick
  // restart on the same port but refuses a port in use.
  candidate->set_socket_options([](socket_t sock) {
    int yes = 1;
    setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  // Request bodies of the service are small JSON objects; anything larger is
  // refused with HTTP 413 instead of being held in memory.
  candidate->set_payload_max_length(1 << 20);
  AddRoutes(*candidate, front, api, login);

  int bound = -1;
  if (options.port == 0) {
    bound = candidate->bind_to_any_port(kHost);
  } else if (candidate->bind_to_port(kHost, options.port)) {
    bound = options.port;
  }
  if (bound <= 0) {
    certificate.reset();
    return fail("cannot listen on " + std::string(kHost) + ":" + std::to_string(options.port));
  }

  const std::string url =
      std::string(options.https ? "https://" : "http://") + kHost + ":" + std::to_string(bound);
  {
    std::lock_guard lock(address_mutex);
    base_url = url;
    ca_file = certificate ? certificate->pemFile() : std::string();
    port = bound;
    error.clear();
  }
  world.setIssuer(url);
  stop_signal.lower();

  server = std::move(candidate);
  listener = std::thread([raw = server.get()] { raw->listen_after_bind(); });
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!server->is_running() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  if (!server->is_running()) {
    // The listener gave up (or never got going); make sure it ends.
    server->stop();
    listener.join();
    server.reset();
    certificate.reset();
    std::lock_guard lock(address_mutex);
    base_url.clear();
    ca_file.clear();
    port = 0;
    error = "the server did not start listening";
    return false;
  }
  return true;
}

void Sandbox::Impl::stop() {
  std::lock_guard lifecycle(lifecycle_mutex);
  if (!server) return;
  stop_signal.raise();
  server->stop();
  listener.join();
  server.reset();
  certificate.reset();
  std::lock_guard lock(address_mutex);
  base_url.clear();
  ca_file.clear();
  port = 0;
}

Sandbox::Sandbox(SandboxOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}

Sandbox::~Sandbox() { stop(); }

bool Sandbox::start() {
  try {
    return impl_->start();
  } catch (const std::exception& failure) {
    std::lock_guard lock(impl_->address_mutex);
    impl_->error = failure.what();
    return false;
  }
}

void Sandbox::stop() { impl_->stop(); }

bool Sandbox::isRunning() const {
  std::lock_guard lock(impl_->address_mutex);
  return impl_->port != 0;
}

std::string Sandbox::error() const {
  std::lock_guard lock(impl_->address_mutex);
  return impl_->error;
}

std::string Sandbox::baseUrl() const {
  std::lock_guard lock(impl_->address_mutex);
  return impl_->base_url;
}

int Sandbox::port() const {
  std::lock_guard lock(impl_->address_mutex);
  return impl_->port;
}

std::string Sandbox::caFile() const {
  std::lock_guard lock(impl_->address_mutex);
  return impl_->ca_file;
}

std::string Sandbox::logoUrl() const { return impl_->addressOf(kPublisherLogoPath); }

std::string Sandbox::loginPageUrl(std::int64_t publisher_id, std::int64_t bid_id) const {
  const std::string base = baseUrl();
  return base + "/?login_source=ios_paywall&login_publisher_id=" + std::to_string(publisher_id) +
         "&login_publisher_logo_url=" + base + kPublisherLogoPath +
         "&login_publisher_bid_id=" + std::to_string(bid_id) + "&login_redirect_url=" + base +
         kWindowModePath;
}

bool Sandbox::addPublisher(const Publisher& publisher) { return impl_->world.addPublisher(publisher); }
bool Sandbox::addArticle(const Article& article) { return impl_->world.addArticle(article); }
bool Sandbox::addCustomer(const Customer& customer) { return impl_->world.addCustomer(customer); }

std::optional<Customer> Sandbox::customer(std::string_view email) const {
  return impl_->world.customer(email);
}

std::optional<double> Sandbox::balance(std::string_view email) const {
  auto found = impl_->world.customer(email);
  if (!found) return std::nullopt;
  return found->balance;
}

bool Sandbox::ownsArticle(std::string_view email, std::string_view article_url) const {
  return impl_->world.owns(email, article_url).value_or(false);
}

std::optional<bool> Sandbox::isDeviceLoggedOut(std::string_view device_key) const {
  return impl_->world.isDeviceLoggedOut(device_key);
}

std::optional<Bid> Sandbox::bid(std::int64_t bid_id) const { return impl_->world.bid(bid_id); }

void Sandbox::reset() {
  impl_->world.clear();
  impl_->world.setTokenLifetimes(impl_->options.accessTokenLifetime, impl_->options.refreshTokenLifetime);
  if (impl_->options.seedDefaultWorld) SeedDefaultWorld(impl_->world);
  impl_->log.clear();
  impl_->faults.clearAll();
}

std::optional<LoginKeys> Sandbox::issueLoginKeys(std::string_view email) {
  return impl_->world.issueLoginKeys(email);
}

std::optional<SessionKeys> Sandbox::createSession(std::string_view email,
                                                  std::chrono::seconds access_lifetime,
                                                  std::chrono::seconds refresh_lifetime) {
  return impl_->world.createSession(email, access_lifetime, refresh_lifetime);
}

std::optional<SessionKeys> Sandbox::createSession(std::string_view email) {
  return impl_->world.createSession(email);
}

void Sandbox::setTokenLifetimes(std::chrono::seconds access, std::chrono::seconds refresh) {
  impl_->world.setTokenLifetimes(access, refresh);
}

std::optional<std::string> Sandbox::lastOneTimeCode(std::string_view email) const {
  return impl_->world.lastOneTimeCode(email);
}

std::vector<RecordedRequest> Sandbox::requests() const { return impl_->log.all(); }
std::vector<RecordedRequest> Sandbox::requestsTo(std::string_view path) const { return impl_->log.to(path); }
void Sandbox::clearRequests() { impl_->log.clear(); }

void Sandbox::setFault(std::string_view path, Fault fault) { impl_->faults.set(path, std::move(fault)); }
void Sandbox::clearFault(std::string_view path) { impl_->faults.clear(path); }
void Sandbox::clearFaults() { impl_->faults.clearAll(); }

}  // namespace obolo::sandbox
