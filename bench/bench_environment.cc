#include "bench/bench_environment.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "platform/log.h"
#include "platform/preference_store.h"

namespace obolo::bench {
namespace {

// The service the way a production one behaves: connections stay open
// between requests, for many of them (cpp-httplib's default is 5), so a call is measured as a call
// and not as a TLS handshake every fifth time; and answers go out without
// waiting on Nagle's algorithm (about 40 ms per call otherwise).
sandbox::SandboxOptions BenchSandboxOptions() {
  sandbox::SandboxOptions options;
  options.keepAlive = true;
  options.keepAliveMaxRequests = 10'000;
  options.tcpNoDelay = true;
  return options;
}

struct State {
  sandbox::Sandbox sandbox{BenchSandboxOptions()};
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

bool BenchEnvironment::SetUp(std::string& error) {
  SetLogSink(NullLogSink());
  state = new State;
  if (!state->sandbox.start()) {
    error = "the sandbox did not start: " + state->sandbox.error();
    return false;
  }
  const std::string base = state->sandbox.baseUrl();
  setenv("OBOLO_API_BASE_URL", base.c_str(), 1);
  setenv("OBOLO_CA_FILE", state->sandbox.caFile().c_str(), 1);
  setenv("OBOLO_WALLET_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_REDIRECT_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_LOGIN_LOGO_URL", state->sandbox.logoUrl().c_str(), 1);

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

}  // namespace obolo::bench
