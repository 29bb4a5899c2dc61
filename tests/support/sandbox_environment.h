// One HTTPS sandbox for a whole test program, with the kit pointed at it.
//
// A test program opts in with one line at namespace scope in any of its test
// files:
//
//   #include "support/sandbox_environment.h"
//   OBOLO_USE_SANDBOX_ENVIRONMENT();
//
// Before the first test runs, the environment starts the sandbox on a free
// loopback port and sets OBOLO_API_BASE_URL, OBOLO_CA_FILE,
// OBOLO_WALLET_ORIGIN, OBOLO_REDIRECT_ORIGIN and OBOLO_LOGIN_LOGO_URL with
// setenv(), so the kit, which reads each variable once at first use, talks to
// it. If the sandbox cannot start, the program's tests do not run and the run
// fails with the reason. Tests reach the instance through
// SandboxEnvironment::sandbox() to seed state, set faults and read the
// recorded requests.
//
// OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT() is the same with a sandbox that
// keeps connections open between requests, as a production service does, so
// the kit reuses them.
//
// Under CTest every test case runs in a process of its own, so each starts
// with the default world, no recorded requests and no faults. A test that may
// share its process with others (the binary run by hand) and needs a fresh
// world calls sandbox().reset() first.

#ifndef OBOLO_TESTS_SUPPORT_SANDBOX_ENVIRONMENT_H_
#define OBOLO_TESTS_SUPPORT_SANDBOX_ENVIRONMENT_H_

#include <gtest/gtest.h>

#include "sandbox/sandbox.h"

namespace obolo::testing {

class SandboxEnvironment : public ::testing::Environment {
 public:
  // Registers the program's one environment with GoogleTest (which owns it)
  // and returns it; later calls return the same one, whatever their options.
  // Safe to call during static initialisation.
  static SandboxEnvironment* Register(const sandbox::SandboxOptions& options = {});

  // The program's sandbox. REQUIRES: Register() was called and the test
  // environments are set up (true inside any test).
  static sandbox::Sandbox& sandbox();

  void SetUp() override;
  void TearDown() override;

 private:
  explicit SandboxEnvironment(const sandbox::SandboxOptions& options) : sandbox_(options) {}

  sandbox::Sandbox sandbox_;
};

}  // namespace obolo::testing

#define OBOLO_USE_SANDBOX_ENVIRONMENT()                                                           \
  [[maybe_unused]] static ::obolo::testing::SandboxEnvironment* const obolo_sandbox_environment = \
      ::obolo::testing::SandboxEnvironment::Register()

#define OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT()                                                \
  [[maybe_unused]] static ::obolo::testing::SandboxEnvironment* const obolo_sandbox_environment = \
      ::obolo::testing::SandboxEnvironment::Register([] {                                        \
        ::obolo::sandbox::SandboxOptions options;                                                 \
        options.keepAlive = true;                                                                 \
        return options;                                                                           \
      }())

#endif  // OBOLO_TESTS_SUPPORT_SANDBOX_ENVIRONMENT_H_
