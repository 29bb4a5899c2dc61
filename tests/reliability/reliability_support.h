// Shared pieces of the reliability suite: the faults the sandbox injects, the
// stored session as one comparable value, and the case count each matrix
// reports.

#ifndef OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_
#define OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>

#include "entry/global_variable.h"
#include "sandbox/fault.h"
#include "sandbox/world_types.h"

namespace obolo::reliability {

// How long a slow answer is held back: long enough that the kit must wait for
// it, far below the kit's 60-second time-out.
inline constexpr std::chrono::milliseconds kSlowAnswerDelay{400};

struct NamedFault {
  const char* name;
  sandbox::Fault fault;
};

inline sandbox::Fault FailureWithMessage(std::string message) {
  sandbox::Fault fault = sandbox::Fault::Once(sandbox::FaultKind::kFailureWithMessage);
  fault.message = std::move(message);
  return fault;
}

// Every kind of fault the sandbox injects, once each. The slow answer comes
// last: it is the only one that lets the service do its work, so a table that
// reuses one screen for all rows ends with it.
inline constexpr char kRefusal[] = "The service refused the request in the fault matrix";
inline std::array<NamedFault, 9> AllFaults() {
  using sandbox::Fault;
  using sandbox::FaultKind;
  return {{
      {"server error 500 with {}", Fault::Once(FaultKind::kServerError)},
      {"HTML error page", Fault::Once(FaultKind::kHtmlErrorPage)},
      {"malformed JSON", Fault::Once(FaultKind::kMalformedJson)},
      {"a member of the wrong JSON type", Fault::Once(FaultKind::kWrongType)},
      {"success false with a message", FailureWithMessage(kRefusal)},
      {"success false without a message", Fault::Once(FaultKind::kFailureWithoutMessage)},
      {"empty body", Fault::Once(FaultKind::kEmptyBody)},
      {"connection closed without a response", Fault::Once(FaultKind::kCloseWithoutResponse)},
      {"slow answer", Fault::Slow(kSlowAnswerDelay)},
  }};
}

// The five values of the persisted session, read from the store.
struct StoredSession {
  std::string deviceKey;
  std::string accessToken;
  std::string refreshToken;
  std::string email;
  std::int64_t customerId = 0;

  static StoredSession Read() {
    const GlobalVariable& global = GlobalVariable::shared();
    return {global.getDeviceKey(), global.getAccessToken(), global.getRefreshToken(), global.getEmail(),
            global.getCustomerId()};
  }
  bool empty() const { return *this == StoredSession{}; }
  bool operator==(const StoredSession&) const = default;
};

inline void PrintTo(const StoredSession& session, std::ostream* out) {
  *out << "{deviceKey \"" << session.deviceKey << "\", accessToken \"" << session.accessToken
       << "\", refreshToken \"" << session.refreshToken << "\", email \"" << session.email << "\", customerId "
       << session.customerId << "}";
}

// Stores a session as a login leaves it.
inline void StoreSession(const sandbox::SessionKeys& keys) {
  GlobalVariable& global = GlobalVariable::shared();
  global.setDeviceKey(keys.deviceKey);
  global.setAccessToken(keys.accessToken);
  global.setRefreshToken(keys.refreshToken);
  global.setEmail(keys.email);
  global.setCustomerId(keys.customerId);
}

// Reports how many cells a matrix ran, in the test's output and its XML record.
inline void ReportFaultMatrixCases(const char* matrix, int cases) {
  std::printf("fault matrix: %s: %d cases\n", matrix, cases);
  std::fflush(stdout);
  ::testing::Test::RecordProperty("fault_matrix_cases", cases);
}

}  // namespace obolo::reliability

#endif  // OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_
