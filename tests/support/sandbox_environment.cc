#include "support/sandbox_environment.h"

#include <stdlib.h>

namespace obolo::testing {
namespace {

SandboxEnvironment* instance = nullptr;

}  // namespace

SandboxEnvironment* SandboxEnvironment::Register(const sandbox::SandboxOptions& options) {
  if (instance == nullptr) {
    instance = new SandboxEnvironment(options);
    ::testing::AddGlobalTestEnvironment(instance);
  }
  return instance;
}

sandbox::Sandbox& SandboxEnvironment::sandbox() { return Register()->sandbox_; }

void SandboxEnvironment::SetUp() {
  ASSERT_TRUE(sandbox_.start()) << "the sandbox did not start: " << sandbox_.error();
  const std::string base = sandbox_.baseUrl();
  setenv("OBOLO_API_BASE_URL", base.c_str(), 1);
  setenv("OBOLO_CA_FILE", sandbox_.caFile().c_str(), 1);
  setenv("OBOLO_WALLET_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_REDIRECT_ORIGIN", base.c_str(), 1);
  setenv("OBOLO_LOGIN_LOGO_URL", sandbox_.logoUrl().c_str(), 1);
}

void SandboxEnvironment::TearDown() { sandbox_.stop(); }

}  // namespace obolo::testing
