#include "wallet/logout_controller.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "entry/global_variable.h"
#include "platform/main_loop.h"
#include "platform/notification_center.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/log_capture.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"
#include "toolkit/ui_application.h"
#include "ui/consents.h"
#include "wallet/floating_button.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using sandbox::Fault;
using testing::LogCapture;
using testing::SandboxEnvironment;
using testing::TemporaryStore;
using testing::TransferObserver;

// A session as stored: access and refresh token, device key, e-mail, customer id.
using Session = std::tuple<std::string, std::string, std::string, std::string, std::int64_t>;

Session Stored() {
  const GlobalVariable& global = GlobalVariable::shared();
  return {global.getAccessToken(), global.getRefreshToken(), global.getDeviceKey(), global.getEmail(),
          global.getCustomerId()};
}

class WalletScreenTest : public ::testing::Test {
 protected:
  // A logged-in reader, and an observer that notes the stored session at each
  // session-ended notification.
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    sandbox().reset();
    GlobalVariable& global = GlobalVariable::shared();
    global.setPublisherId(sandbox::seed::kPublisherId);
    auto keys = sandbox().createSession(sandbox::seed::kReaderEmail);
    ASSERT_TRUE(keys.has_value());
    session = *keys;
    global.setDeviceKey(session.deviceKey);
    global.setAccessToken(session.accessToken);
    global.setRefreshToken(session.refreshToken);
    global.setEmail(session.email);
    global.setCustomerId(session.customerId);
    NotificationCenter::defaultCenter().addObserver(
        std::weak_ptr<void>(seen), kSessionEndedNotification,
        [seen = std::weak_ptr<std::vector<Session>>(seen)](const Notification&) { seen.lock()->push_back(Stored()); });
  }

  static sandbox::Sandbox& sandbox() { return SandboxEnvironment::sandbox(); }

  // Presents a new wallet screen from a host screen, as the floating button
  // does, and waits until the presentation has completed.
  void PresentWallet() {
    host = std::make_shared<UIViewController>();
    wallet = std::make_shared<LogoutController>();
    host->present(wallet, /*animated=*/true);
    ASSERT_TRUE(MainLoop::main().runUntil([&] { return !wallet->isBeingPresented(); }, 5s));
  }

  // Runs the main loop until `count` answers have come back and what they
  // posted to the main loop has run.
  void SettleAnswers(int count) {
    ASSERT_TRUE(transfers.waitForHandled(count));
    MainLoop::main().runFor(0s);
  }

  Session SignedIn() const {
    return {session.accessToken, session.refreshToken, session.deviceKey, session.email, session.customerId};
  }
  bool SessionKept() const { return Stored() == SignedIn(); }
  static bool SessionCleared() { return Stored() == Session("", "", "", "", 0); }

  std::string BalanceShown() const { return wallet->lblBalance->text().value_or("(none)"); }

  TemporaryStore store;
  LogCapture log;
  TransferObserver transfers;
  sandbox::SessionKeys session;
  std::shared_ptr<std::vector<Session>> seen = std::make_shared<std::vector<Session>>();
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<LogoutController> wallet;
};

// --- Balance -----------------------------------------------------------------

TEST_F(WalletScreenTest, TheFloatingButtonOpensTheWalletWhichAsksForTheBalance) {
  host = std::make_shared<UIViewController>();
  addFloatingButton(*host, 0);
  MainLoop::main().advance(1ms);
  ASSERT_NE(floatingButton(*host), nullptr);
  ASSERT_TRUE(floatingButton(*host)->tap()) << "a reader can reach the button";
  EXPECT_NE(log.indexOf("tapped"), -1);
  wallet = std::dynamic_pointer_cast<LogoutController>(host->presentedViewController());
  ASSERT_NE(wallet, nullptr);
  EXPECT_EQ(wallet->sceneIdentifier(), "LogoutControllerID");
  EXPECT_EQ(wallet->modalPresentationStyle(), UIModalPresentationStyle::fullScreen);
  const std::string placeholder = BalanceShown();
  EXPECT_FALSE(placeholder.empty());

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return BalanceShown() != placeholder; }, 10s));
  EXPECT_EQ(BalanceShown(), "EUR 10.0");  // the seeded reader's 10 euros
  const auto requests = sandbox().requestsTo(sandbox::kBalanceAndArticlePath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].header("Authorization"), "Bearer " + session.accessToken);
  EXPECT_EQ(nlohmann::json::parse(requests[0].body),
            (nlohmann::json{{"customerId", sandbox::seed::kReaderId}, {"publisherId", sandbox::seed::kPublisherId}}));
  EXPECT_TRUE(SessionKept());
}

TEST_F(WalletScreenTest, BalanceAnswersOfEveryShape) {
  struct Row {
    const char* name;
    Fault fault;
    // Empty: the label keeps its starting text.
    std::string shown;
    // A body that does not read: its failure sentence must be written out.
    std::optional<std::string> unreadable;
  };
  const std::string page = "<html><body>Bad gateway</body></html>";
  Fault html = Fault::Custom(502, page);
  html.contentType = "text/html";
  const std::vector<Row> rows = {
      {"currency and balance",
       Fault::Custom(200, R"({"success":true,"data":{"balance":12.5,"currency":"EUR"}})"), "EUR 12.5",
       std::nullopt},
      {"whole balance", Fault::Custom(200, R"({"data":{"balance":3,"currency":"CHF"}})"), "CHF 3.0",
       std::nullopt},
      {"no currency", Fault::Custom(200, R"({"data":{"balance":12.5}})"), " 12.5", std::nullopt},
      {"no balance", Fault::Custom(200, R"({"data":{"currency":"EUR"}})"), "EUR 0.0", std::nullopt},
      {"success false is not looked at",
       Fault::Custom(200, R"({"success":false,"data":{"balance":1.25,"currency":"EUR"}})"), "EUR 1.25",
       std::nullopt},
      {"balance of the wrong type", Fault::Custom(200, R"({"data":{"balance":"10","currency":"EUR"}})"), "",
       R"({"data":{"balance":"10","currency":"EUR"}})"},
      {"html error page", html, "", page},
  };
  int answers = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    log.clear();
    sandbox().setFault(sandbox::kBalanceAndArticlePath, row.fault);
    PresentWallet();
    const std::string placeholder = BalanceShown();
    SettleAnswers(++answers);
    EXPECT_EQ(BalanceShown(), row.shown.empty() ? placeholder : row.shown);
    if (row.unreadable) {
      const std::string failure = BalanceAndArticleData::decode(*row.unreadable).error();
      ASSERT_FALSE(failure.empty());
      EXPECT_NE(log.indexOf(failure), -1) << "the failure is written out as one line";
    }
    EXPECT_TRUE(SessionKept());
  }
}

// --- Logout ------------------------------------------------------------------

TEST_F(WalletScreenTest, LogoutTellsTheServiceThenNotifiesThenClearsTheSession) {
  PresentWallet();
  ASSERT_TRUE(wallet->btnLogout->tap());
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return SessionCleared(); }, 10s));

  EXPECT_EQ(host->presentedViewController(), nullptr) << "the wallet was dismissed";
  EXPECT_EQ(*seen, std::vector<Session>{SignedIn()}) << "observers still find the session that is ending";

  EXPECT_EQ(sandbox().isDeviceLoggedOut(session.deviceKey), true);
  const auto requests = sandbox().requestsTo(sandbox::kLogoutDevicePath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "PUT");
  EXPECT_EQ(requests[0].header("Authorization"), "Bearer " + session.accessToken);
  EXPECT_EQ(nlohmann::json::parse(requests[0].body),
            (nlohmann::json{{"deviceKey", session.deviceKey}, {"email", session.email}}));
}

// Only an answer that decodes into LogoutData (its `data` is required) ends the
// session; whatever its `success` says. Faults without an answer are covered by
// the wallet fault matrix.
TEST_F(WalletScreenTest, AFailedLogoutIsWrittenOutKeepsTheScreenAndCanBeRetried) {
  Fault html = Fault::Custom(502, "<html>Bad gateway</html>");
  html.contentType = "text/html";
  const std::vector<std::pair<Fault, std::string>> failures = {
      {Fault::Custom(200, R"({"success":true})"), R"({"success":true})"},
      {html, "<html>Bad gateway</html>"},
  };
  PresentWallet();
  int answers = 1;  // the balance
  SettleAnswers(answers);
  for (const auto& [fault, body] : failures) {
    SCOPED_TRACE(body);
    log.clear();
    sandbox().setFault(sandbox::kLogoutDevicePath, fault);
    ASSERT_TRUE(wallet->btnLogout->tap());
    SettleAnswers(++answers);
    MainLoop::main().advance(1s);  // anything a dismissal would have run

    EXPECT_EQ(host->presentedViewController(), wallet) << "the screen stays open";
    EXPECT_TRUE(SessionKept());
    EXPECT_TRUE(seen->empty());
    EXPECT_EQ(sandbox().isDeviceLoggedOut(session.deviceKey), false);
    const std::string failure = LogoutData::decode(body).error();
    ASSERT_FALSE(failure.empty());
    EXPECT_NE(log.indexOf(failure), -1) << "the failure is written out";
  }

  // The reader tries again; a refusal that decodes ends the session here.
  sandbox().setFault(sandbox::kLogoutDevicePath,
                     Fault::Custom(200, R"({"success":false,"message":"Unknown device","data":false})"));
  wallet->onLogoutButtonTapped(wallet->btnLogout);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return SessionCleared(); }, 10s));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(*seen, std::vector<Session>{SignedIn()});
}

// --- Links and cancel --------------------------------------------------------

TEST_F(WalletScreenTest, LinksOpenTheirAddressesAndCancelOnlyClosesTheScreen) {
  PresentWallet();
  ASSERT_EQ(wallet->btnConsent.size(), 3u);
  const std::vector<std::pair<int, std::string_view>> expected = {
      {0, Consents::TERMS_URL}, {1, Consents::PRIVACY_URL}, {2, Consents::CONTACT_URL}};
  for (const auto& [tag, url] : expected) {
    SCOPED_TRACE(tag);
    std::shared_ptr<UIButton> link;
    for (const auto& button : wallet->btnConsent) {
      if (button->tag() == tag) link = button;
    }
    ASSERT_NE(link, nullptr);
    const std::size_t opened = UIApplication::shared().openedURLs().size();
    ASSERT_TRUE(link->tap());
    MainLoop::main().advance(1s);
    ASSERT_EQ(UIApplication::shared().openedURLs().size(), opened + 1);
    EXPECT_EQ(UIApplication::shared().openedURLs().back().absoluteString(), url);
    EXPECT_EQ(host->presentedViewController(), wallet);
  }

  ASSERT_TRUE(wallet->btnCancel->tap());
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return host->presentedViewController() == nullptr; }, 5s));
  SettleAnswers(1);  // the balance request still completes harmlessly
  MainLoop::main().advance(1s);
  EXPECT_TRUE(SessionKept());
  EXPECT_TRUE(seen->empty());
  EXPECT_TRUE(sandbox().requestsTo(sandbox::kLogoutDevicePath).empty());
}

}  // namespace
}  // namespace obolo
