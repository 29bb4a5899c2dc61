// The base of the screens' fault matrices: the paywall as a reader sees it, as
// one comparable value, and a way to let every transfer and what it posted to
// the main loop run out without sleeping.

#ifndef OBOLO_TESTS_RELIABILITY_SCREEN_FAULT_TEST_H_
#define OBOLO_TESTS_RELIABILITY_SCREEN_FAULT_TEST_H_

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "paywall/paywall_vc.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "reliability/reliability_support.h"
#include "support/call_probe.h"
#include "support/paywall_host.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "wallet/floating_button.h"

namespace obolo::reliability {

// What a reader sees of one paywall and its host screen.
struct PaywallLook {
  bool paywallShown = false;  // the paywall's root view
  bool cardShown = false;     // unlockView
  bool splashShown = false;
  bool blurShown = false;  // the blur over the host's content view
  bool unlockShown = false;
  std::string title;
  std::string prompt;
  std::string price;
  std::string splashMessage;
  bool presenting = false;  // the paywall presents another screen (the login)
  bool floatingButton = false;
  std::int64_t bidId = 0;

  static PaywallLook Of(const PaywallVC& paywall, const testing::PaywallHost& host) {
    PaywallLook look;
    look.paywallShown = !testing::PaywallHost::isHidden(paywall);
    look.cardShown = !paywall.unlockView->isHidden();
    look.splashShown = !paywall.splashView->isHidden();
    look.blurShown = !paywall.visualEffectView->isHidden();
    look.unlockShown = !paywall.btnUnlock->isHidden();
    look.title = paywall.lblObTitle->text().value_or("");
    look.prompt = paywall.lblObPromt->text().value_or("");
    look.price = paywall.lblObCustomerPrice->text().value_or("");
    look.splashMessage = paywall.lblSplashMessage->text().value_or("");
    look.presenting = paywall.presentedViewController() != nullptr;
    look.floatingButton = host.hasFloatingButtonOnScreen();
    look.bidId = paywall.obBidId;
    return look;
  }

  // The card, offered for payment.
  bool offersCard() const { return paywallShown && cardShown && !splashShown && blurShown && !title.empty(); }
  // Nothing of the paywall shows: the article is readable.
  bool readable() const { return !paywallShown && !cardShown && !splashShown && !blurShown; }

  bool operator==(const PaywallLook&) const = default;
};

inline void PrintTo(const PaywallLook& look, std::ostream* out) {
  *out << "{paywall " << look.paywallShown << ", card " << look.cardShown << ", splash " << look.splashShown
       << ", blur " << look.blurShown << ", unlock " << look.unlockShown << ", title \"" << look.title
       << "\", price \"" << look.price << "\", splash message \"" << look.splashMessage << "\", presenting "
       << look.presenting << ", floating button " << look.floatingButton << ", bid " << look.bidId << "}";
}

class ScreenFaultTest : public ::testing::Test {
 protected:
  // A fresh world even when the cases share a process (the binary run by
  // hand), and the kit's diagnostics kept out of the test's output.
  ScreenFaultTest() {
    sandbox_.reset();
    SetLogSink(NullLogSink());
  }
  ~ScreenFaultTest() override { SetLogSink({}); }

  // Lets every transfer issued so far end, runs what the answers posted to the
  // main loop, and goes on while that issued more transfers. Virtual time does
  // not move, so no 5-second timer fires.
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

#endif  // OBOLO_TESTS_RELIABILITY_SCREEN_FAULT_TEST_H_
