#include "bench/bench_environment.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/preference_store.h"

namespace obolo::bench {
namespace {

// The service the way a production one behaves: connections stay open
// between requests, for many of them (cpp-httplib's default is 5), so a call
// is measured as a call and not as a TLS handshake every fifth time; an idle
// connection is kept for 75 s, as nginx keeps one by default (the purchase's
// 5-second splash leaves the kit's connection idle); and answers go out
// without waiting on Nagle's algorithm (about 40 ms per call otherwise).
sandbox::SandboxOptions BenchSandboxOptions() {
  sandbox::SandboxOptions options;
  options.keepAlive = true;
  options.keepAliveIdle = std::chrono::seconds(75);
  options.keepAliveMaxRequests = 10'000;
  options.tcpNoDelay = true;
  return options;
}

struct State {
  sandbox::Sandbox sandbox{BenchSandboxOptions()};
  std::unique_ptr<DelayRelay> service_relay;
  std::unique_ptr<DelayRelay> logo_relay;
  std::string service_url;
  std::string directory;
  std::string store_path;
};

State* state = nullptr;

std::string MakeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "obolo-bench-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return "";
  return pattern;
}

}  // namespace

bool BenchEnvironment::SetUp(std::string& error, bool through_relays) {
  SetLogSink(NullLogSink());
  state = new State;
  if (!state->sandbox.start()) {
    error = "the sandbox did not start: " + state->sandbox.error();
    return false;
  }
  state->service_url = state->sandbox.baseUrl();
  if (through_relays) {
    state->service_relay = std::make_unique<DelayRelay>(state->sandbox.port());
    state->logo_relay = std::make_unique<DelayRelay>(state->sandbox.port());
    if (!state->service_relay->start() || !state->logo_relay->start()) {
      error = "the relays cannot listen on loopback";
      return false;
    }
    state->service_url = "https://127.0.0.1:" + std::to_string(state->service_relay->port());
  }
  const std::string& base = state->service_url;
  setenv("OBOLO_API_BASE_URL", base.c_str(), 1);
  setenv("OBOLO_CA_FILE", state->sandbox.caFile().c_str(), 1);
  setenv("OBOLO_WALLET_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_REDIRECT_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_LOGIN_LOGO_URL", logoUrl().c_str(), 1);

  state->directory = MakeTemporaryDirectory();
  if (state->directory.empty()) {
    error = "no temporary directory for the session store";
    return false;
  }
  state->store_path = state->directory + "/preferences.sqlite3";
  auto store = std::make_shared<SqlitePreferenceStore>(state->store_path);
  if (!store->isPersistent()) {
    error = "the session store at " + state->store_path + " cannot be used";
    return false;
  }
  PreferenceStore::setStandard(std::move(store));
  return true;
}

void BenchEnvironment::TearDown() {
  if (state == nullptr) return;
  PreferenceStore::setStandard(nullptr);
  // The kit's connections close with its session, so the sandbox does not
  // wait out their 75 s keep-alive when it stops.
  HttpSession::setShared(nullptr);
  state->service_relay.reset();
  state->logo_relay.reset();
  state->sandbox.stop();
  if (!state->directory.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(state->directory, ignored);
  }
  // The state is left allocated: the kit's shared HTTP session may still hold
  // connections to the stopped sandbox until the process ends.
}

sandbox::Sandbox& BenchEnvironment::sandbox() { return state->sandbox; }

const std::string& BenchEnvironment::storePath() { return state->store_path; }

std::string BenchEnvironment::serviceUrl() { return state->service_url; }

std::string BenchEnvironment::logoUrl() {
  if (!state->logo_relay) return state->sandbox.logoUrl();
  return "https://127.0.0.1:" + std::to_string(state->logo_relay->port()) + sandbox::kPublisherLogoPath;
}

DelayRelay& BenchEnvironment::serviceRelay() { return *state->service_relay; }

DelayRelay& BenchEnvironment::logoRelay() { return *state->logo_relay; }

}  // namespace obolo::bench
