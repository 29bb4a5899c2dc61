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

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using sandbox::Fault;
using sandbox::FaultKind;
using testing::LogCapture;
using testing::SandboxEnvironment;
using testing::TemporaryStore;
using testing::TransferObserver;

// Counts the session-ended notifications and what the session looked like when
// each arrived.
struct SessionWatcher {
  struct Seen {
    std::string accessToken;
    std::string deviceKey;
    std::string email;
    std::int64_t customerId;
    bool hadObject;
    std::size_t userInfoSize;
  };
  std::vector<Seen> seen;
};

class WalletScreenTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    sandbox().reset();
    GlobalVariable::shared().setPublisherId(sandbox::seed::kPublisherId);
    SignIn();
    NotificationCenter::defaultCenter().addObserver(
        std::weak_ptr<void>(watcher), kSessionEndedNotification,
        [watcher = std::weak_ptr<SessionWatcher>(watcher)](const Notification& note) {
          auto strong = watcher.lock();
          const GlobalVariable& global = GlobalVariable::shared();
          strong->seen.push_back({global.getAccessToken(), global.getDeviceKey(), global.getEmail(),
                                  global.getCustomerId(), note.object.has_value(), note.userInfo.size()});
        });
  }

  // Stores a new logged-in session of the seeded reader, as a login does, and
  // forgets the notifications seen so far.
  void SignIn() {
    auto keys = sandbox().createSession(sandbox::seed::kReaderEmail);
    ASSERT_TRUE(keys.has_value());
    session = *keys;
    GlobalVariable& global = GlobalVariable::shared();
    global.setDeviceKey(session.deviceKey);
    global.setAccessToken(session.accessToken);
    global.setRefreshToken(session.refreshToken);
    global.setEmail(session.email);
    global.setCustomerId(session.customerId);
    watcher->seen.clear();
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

  // The session as stored: access and refresh token, device key, e-mail, customer id.
  static std::tuple<std::string, std::string, std::string, std::string, std::int64_t> Stored() {
    const GlobalVariable& global = GlobalVariable::shared();
    return {global.getAccessToken(), global.getRefreshToken(), global.getDeviceKey(), global.getEmail(),
            global.getCustomerId()};
  }
  bool SessionKept() const {
    return Stored() == std::tuple(session.accessToken, session.refreshToken, session.deviceKey, session.email,
                                  session.customerId);
  }
  static bool SessionCleared() { return Stored() == std::tuple("", "", "", "", std::int64_t{0}); }

  std::string BalanceShown() const { return wallet->lblBalance->text().value_or("(none)"); }

  TemporaryStore store;
  LogCapture log;
  TransferObserver transfers;
  sandbox::SessionKeys session;
  std::shared_ptr<SessionWatcher> watcher = std::make_shared<SessionWatcher>();
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<LogoutController> wallet;
};

// --- Balance -----------------------------------------------------------------

TEST_F(WalletScreenTest, ShowsTheReadersBalanceAskedForWithTheStoredSession) {
  PresentWallet();
  const std::string placeholder = BalanceShown();
  EXPECT_FALSE(placeholder.empty());

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return BalanceShown() != placeholder; }, 10s));
  EXPECT_EQ(BalanceShown(), "EUR 10.0");  // the seeded reader's 10 euros

  const auto requests = sandbox().requestsTo(sandbox::kBalanceAndArticlePath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].header("Authorization"), "Bearer " + session.accessToken);
  const auto body = nlohmann::json::parse(requests[0].body);
  EXPECT_EQ(body, (nlohmann::json{{"customerId", sandbox::seed::kReaderId},
                                  {"publisherId", sandbox::seed::kPublisherId}}));
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
      {"no data", Fault::Custom(200, R"({"success":true,"message":"ok"})"), "", std::nullopt},
      {"server error with {}", Fault::Once(FaultKind::kServerError), "", std::nullopt},
      {"balance of the wrong type", Fault::Custom(200, R"({"data":{"balance":"10","currency":"EUR"}})"), "",
       R"({"data":{"balance":"10","currency":"EUR"}})"},
      {"html error page", html, "", page},
      // Always: the HTTP client retries once on a kept-alive connection that closed.
      {"no answer at all", Fault::Always(FaultKind::kCloseWithoutResponse), "", std::nullopt},
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
  ASSERT_EQ(watcher->seen.size(), 1u);
  const auto& seen = watcher->seen[0];
  // The observer still found the session that was ending.
  EXPECT_EQ(seen.accessToken, session.accessToken);
  EXPECT_EQ(seen.deviceKey, session.deviceKey);
  EXPECT_EQ(seen.email, session.email);
  EXPECT_EQ(seen.customerId, session.customerId);
  EXPECT_FALSE(seen.hadObject);
  EXPECT_EQ(seen.userInfoSize, 0u);

  EXPECT_EQ(sandbox().isDeviceLoggedOut(session.deviceKey), true);
  const auto requests = sandbox().requestsTo(sandbox::kLogoutDevicePath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "PUT");
  EXPECT_EQ(requests[0].header("Authorization"), "Bearer " + session.accessToken);
  EXPECT_EQ(nlohmann::json::parse(requests[0].body),
            (nlohmann::json{{"deviceKey", session.deviceKey}, {"email", session.email}}));
}

TEST_F(WalletScreenTest, AnyLogoutAnswerThatReadsEndsTheSessionHere) {
  const std::vector<std::pair<const char*, std::string>> answers = {
      {"success false", R"({"success":false,"message":"Unknown device","data":false,"statusCode":404})"},
      {"data alone", R"({"data":true})"},
  };
  for (const auto& [name, body] : answers) {
    SCOPED_TRACE(name);
    SignIn();
    ASSERT_FALSE(HasFatalFailure());
    sandbox().setFault(sandbox::kLogoutDevicePath, Fault::Custom(200, body));
    PresentWallet();
    wallet->onLogoutButtonTapped(wallet->btnLogout);
    ASSERT_TRUE(MainLoop::main().runUntil([&] { return SessionCleared(); }, 10s));
    EXPECT_EQ(host->presentedViewController(), nullptr);
    ASSERT_EQ(watcher->seen.size(), 1u);
    EXPECT_EQ(watcher->seen[0].accessToken, session.accessToken);
  }
}

TEST_F(WalletScreenTest, AFailedLogoutKeepsTheScreenAndTheSessionAndCanBeRetried) {
  struct Row {
    const char* name;
    Fault fault;
    std::optional<std::string> body;  // decoded to find the failure line
  };
  Fault html = Fault::Custom(502, "<html>Bad gateway</html>");
  html.contentType = "text/html";
  const std::vector<Row> rows = {
      {"success without data", Fault::Custom(200, R"({"success":true})"), R"({"success":true})"},
      {"server error with {}", Fault::Once(FaultKind::kServerError), "{}"},
      {"html error page", html, "<html>Bad gateway</html>"},
      // Always: the HTTP client retries once on a kept-alive connection that closed.
      {"no answer at all", Fault::Always(FaultKind::kCloseWithoutResponse), std::nullopt},
  };
  PresentWallet();
  int answers = 1;  // the balance
  SettleAnswers(answers);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    log.clear();
    sandbox().setFault(sandbox::kLogoutDevicePath, row.fault);
    ASSERT_TRUE(wallet->btnLogout->tap());
    SettleAnswers(++answers);
    MainLoop::main().advance(1s);  // anything a dismissal would have run

    EXPECT_EQ(host->presentedViewController(), wallet) << "the screen stays open";
    EXPECT_TRUE(SessionKept());
    EXPECT_TRUE(watcher->seen.empty());
    EXPECT_EQ(sandbox().isDeviceLoggedOut(session.deviceKey), false);
    if (row.body) {
      const std::string failure = LogoutData::decode(*row.body).error();
      ASSERT_FALSE(failure.empty());
      EXPECT_NE(log.indexOf(failure), -1) << "the failure is written out";
    }
  }

  // The reader tries again, and this time the service answers.
  sandbox().clearFaults();
  ASSERT_TRUE(wallet->btnLogout->tap());
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return SessionCleared(); }, 10s));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(watcher->seen.size(), 1u);
  EXPECT_EQ(sandbox().isDeviceLoggedOut(session.deviceKey), true);
}

// --- Cancel and links --------------------------------------------------------

TEST_F(WalletScreenTest, CancelOnlyClosesTheScreen) {
  PresentWallet();
  ASSERT_TRUE(wallet->btnCancel->tap());
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return host->presentedViewController() == nullptr; }, 5s));
  SettleAnswers(1);  // the balance request still completes harmlessly
  MainLoop::main().advance(1s);

  EXPECT_TRUE(SessionKept());
  EXPECT_TRUE(watcher->seen.empty());
  EXPECT_TRUE(sandbox().requestsTo(sandbox::kLogoutDevicePath).empty());
}

TEST_F(WalletScreenTest, EachLinkOpensItsAddressAndLeavesTheScreenOpen) {
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
  SettleAnswers(1);
  EXPECT_TRUE(SessionKept());
  EXPECT_TRUE(watcher->seen.empty());
  EXPECT_TRUE(sandbox().requestsTo(sandbox::kLogoutDevicePath).empty());
}

}  // namespace
}  // namespace obolo
