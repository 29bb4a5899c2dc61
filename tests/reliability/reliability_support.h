// Shared pieces of the reliability suite: the faults the sandbox injects, the
// stored session and the paywall as a reader sees it as comparable values, and
// a fixture that lets every transfer run out without sleeping.

#ifndef OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_
#define OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "entry/global_variable.h"
#include "paywall/paywall_vc.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "sandbox/fault.h"
#include "sandbox/world_types.h"
#include "support/call_probe.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

namespace obolo::reliability {

struct NamedFault {
  const char* name;
  sandbox::Fault fault;
};

// Every kind of fault the sandbox injects, once each. The slow answer (held
// back 400 ms, far below the kit's time-out) comes last: it is the only one
// that lets the service do its work.
inline constexpr char kRefusal[] = "The service refused the request in the fault matrix";
inline std::array<NamedFault, 9> AllFaults() {
  using sandbox::Fault;
  using sandbox::FaultKind;
  Fault refusal = Fault::Once(FaultKind::kFailureWithMessage);
  refusal.message = kRefusal;
  return {{
      {"server error 500 with {}", Fault::Once(FaultKind::kServerError)},
      {"HTML error page", Fault::Once(FaultKind::kHtmlErrorPage)},
      {"malformed JSON", Fault::Once(FaultKind::kMalformedJson)},
      {"a member of the wrong JSON type", Fault::Once(FaultKind::kWrongType)},
      {"success false with a message", refusal},
      {"success false without a message", Fault::Once(FaultKind::kFailureWithoutMessage)},
      {"empty body", Fault::Once(FaultKind::kEmptyBody)},
      {"connection closed without a response", Fault::Once(FaultKind::kCloseWithoutResponse)},
      {"slow answer", Fault::Slow(std::chrono::milliseconds(400))},
  }};
}

// The five values of the persisted session.
// Counts a fault matrix's cases and, when the test ends, prints how many ran
// ("fault matrix: paywall, accept: 9 cases") and records the number as the
// test's "fault_matrix_cases" property.
class CaseCount {
 public:
  explicit CaseCount(std::string matrix) : matrix_(std::move(matrix)) {}
  CaseCount(const CaseCount&) = delete;
  CaseCount& operator=(const CaseCount&) = delete;
  ~CaseCount() {
    std::printf("fault matrix: %s: %d cases\n", matrix_.c_str(), cases_);
    std::fflush(stdout);
    ::testing::Test::RecordProperty("fault_matrix_cases", cases_);
  }
  void operator++() { ++cases_; }

 private:
  std::string matrix_;
  int cases_ = 0;
};

struct StoredSession {
  std::string deviceKey, accessToken, refreshToken, email;
  std::int64_t customerId = 0;

  static StoredSession Read() {
    const GlobalVariable& g = GlobalVariable::shared();
    return {g.getDeviceKey(), g.getAccessToken(), g.getRefreshToken(), g.getEmail(), g.getCustomerId()};
  }
  static StoredSession Of(const sandbox::SessionKeys& k) {
    return {k.deviceKey, k.accessToken, k.refreshToken, k.email, k.customerId};
  }
  bool empty() const { return *this == StoredSession{}; }
  bool operator==(const StoredSession&) const = default;
};

inline void PrintTo(const StoredSession& s, std::ostream* out) {
  *out << "{device " << s.deviceKey << ", access " << s.accessToken << ", refresh " << s.refreshToken << ", "
       << s.email << ", customer " << s.customerId << "}";
}

// Stores a session as a login leaves it.
inline void StoreSession(const sandbox::SessionKeys& keys) {
  GlobalVariable& g = GlobalVariable::shared();
  g.setDeviceKey(keys.deviceKey);
  g.setAccessToken(keys.accessToken);
  g.setRefreshToken(keys.refreshToken);
  g.setEmail(keys.email);
  g.setCustomerId(keys.customerId);
}

// What a reader sees of one paywall and its host screen.
struct PaywallLook {
  bool paywallShown = false, cardShown = false, splashShown = false, blurShown = false, unlockShown = false;
  std::string title, prompt, price, splashMessage;
  bool presenting = false;  // the paywall presents another screen (the login)
  bool floatingButton = false;
  std::int64_t bidId = 0;

  static PaywallLook Of(const PaywallVC& p, const testing::PaywallHost& host) {
    return {!testing::PaywallHost::isHidden(p), !p.unlockView->isHidden(), !p.splashView->isHidden(),
            !p.visualEffectView->isHidden(), !p.btnUnlock->isHidden(), p.lblObTitle->text().value_or(""),
            p.lblObPromt->text().value_or(""), p.lblObCustomerPrice->text().value_or(""),
            p.lblSplashMessage->text().value_or(""), p.presentedViewController() != nullptr,
            host.hasFloatingButtonOnScreen(), p.obBidId};
  }
  // The card, offered for payment.
  bool offersCard() const { return paywallShown && cardShown && !splashShown && blurShown && !title.empty(); }
  // Nothing of the paywall shows: the article is readable.
  bool readable() const { return !paywallShown && !cardShown && !splashShown && !blurShown; }
  bool operator==(const PaywallLook&) const = default;
};

inline void PrintTo(const PaywallLook& l, std::ostream* out) {
  *out << "{paywall " << l.paywallShown << ", card " << l.cardShown << ", splash " << l.splashShown << ", blur "
       << l.blurShown << ", unlock " << l.unlockShown << ", title \"" << l.title << "\", price \"" << l.price
       << "\", splash \"" << l.splashMessage << "\", presenting " << l.presenting << ", button "
       << l.floatingButton << ", bid " << l.bidId << "}";
}

class ScreenFaultTest : public ::testing::Test {
 protected:
  // A fresh world even when the cases share a process, and the kit's
  // diagnostics kept out of the test's output.
  ScreenFaultTest() {
    sandbox_.reset();
    SetLogSink(NullLogSink());
  }
  ~ScreenFaultTest() override { SetLogSink({}); }

  // Lets every transfer issued so far end and runs what the answers posted to
  // the main loop, while that issues more. Virtual time does not move.
  void Settle(std::chrono::seconds timeout = std::chrono::seconds(15)) {
    for (;;) {
      const int issued = static_cast<int>(transfers_.requests().size());
      ASSERT_TRUE(transfers_.waitForHandled(issued, timeout)) << "a transfer did not end";
      MainLoop::main().runFor(std::chrono::seconds(0));
      if (static_cast<int>(transfers_.requests().size()) == issued) return;
    }
  }

  // The paths of the service calls the kit issued since `from`.
  std::vector<std::string> CallsSince(std::size_t from) const {
    std::vector<std::string> paths;
    const auto requests = transfers_.requests();
    for (std::size_t i = from; i < requests.size(); ++i) {
      const std::string& url = requests[i].url;
      const auto path = url.find('/', url.find("://") + 3);
      if (path != std::string::npos && url.compare(path, 2, "/v") == 0) paths.push_back(url.substr(path));
    }
    return paths;
  }
  std::size_t TransfersSoFar() const { return transfers_.requests().size(); }

  testing::TemporaryStore store_;
  testing::TransferObserver transfers_;
  sandbox::Sandbox& sandbox_ = testing::SandboxEnvironment::sandbox();
};

}  // namespace obolo::reliability

#endif  // OBOLO_TESTS_RELIABILITY_RELIABILITY_SUPPORT_H_
