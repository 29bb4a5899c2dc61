#include "wallet/logout_controller.h"

#include <array>
#include <string_view>
#include <utility>

#include "network/network_manager.h"
#include "network/request_records.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "platform/notification_center.h"
#include "platform/number_format.h"
#include "toolkit/ui_screen.h"
#include "ui/button_helpers.h"
#include "wallet/main_thread_release.h"

namespace obolo {
namespace {

// The screen's layout, in points, for a view the size of the main screen. Rows
// stretch with the width; the link row stays at the bottom.
constexpr CGFloat kMargin = 24;
constexpr CGFloat kRowHeight = 44;
constexpr CGFloat kCancelWidth = 80;
constexpr CGFloat kTopInset = 48;     // below the status bar
constexpr CGFloat kBottomInset = 34;  // above the home indicator

// The kit's blue, as on the floating wallet button.
constexpr UIColor kKitBlue{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1.0};

struct LinkButton {
  int tag;
  std::string_view title;
};
// The tags are what openUrl() picks the address by.
constexpr std::array<LinkButton, 3> kLinkButtons{{{0, "Terms"}, {1, "Privacy"}, {2, "Contact"}}};

std::shared_ptr<UILabel> MakeLabel(CGRect frame, std::string text) {
  auto label = std::make_shared<UILabel>(frame);
  label->setText(std::move(text));
  label->setAutoresizingMask(UIViewAutoresizing::flexibleWidth);
  return label;
}

std::shared_ptr<UIButton> MakeButton(CGRect frame, std::string title, UIColor titleColor,
                                     UIViewAutoresizing mask) {
  auto button = std::make_shared<UIButton>(UIButton::ButtonType::system);
  button->setFrame(frame);
  button->setTitle(std::move(title), UIControlState::normal);
  button->setTitleColor(titleColor, UIControlState::normal);
  button->setAutoresizingMask(mask);
  return button;
}

void ReportFailure(const PaywallReporter& reporter, ServiceCall call, std::string message) {
  if (!reporter.listening()) return;
  reporter.report(
      {.kind = PaywallEventKind::serviceCallFailed, .call = call, .failureText = std::move(message)});
}

}  // namespace

std::string BalanceText(const BADataSet& data) {
  return data.currency.value_or("") + " " + ShortestDecimal(data.balance.value_or(0));
}

LogoutController::LogoutController() : global(GlobalVariable::shared()) {}

void LogoutController::loadView() {
  UIViewController::loadView();
  auto root = view();
  root->setBackgroundColor(UIColor::white());
  const CGRect bounds = root->bounds();
  const CGFloat width = bounds.width() - 2 * kMargin;
  auto self = selfAs(this);

  btnCancel = MakeButton(CGRect(bounds.maxX() - kMargin - kCancelWidth, kTopInset, kCancelWidth, kRowHeight),
                         "Cancel", kKitBlue, UIViewAutoresizing::flexibleLeftMargin);
  btnCancel->setAccessibilityIdentifier("cancel");
  root->addSubview(btnCancel);

  CGFloat y = kTopInset + kRowHeight + kMargin;
  root->addSubview(MakeLabel(CGRect(kMargin, y, width, kRowHeight), "Your wallet"));
  y += kRowHeight;
  lblBalance = MakeLabel(CGRect(kMargin, y, width, kRowHeight), kBalancePlaceholder);
  lblBalance->setAccessibilityIdentifier("balance");
  root->addSubview(lblBalance);
  y += kRowHeight + kMargin;

  btnLogout = MakeButton(CGRect(kMargin, y, width, kRowHeight), "Logout", UIColor::white(),
                         UIViewAutoresizing::flexibleWidth);
  btnLogout->setBackgroundColor(kKitBlue);
  btnLogout->layer().setCornerRadius(kRowHeight / 2);
  btnLogout->setAccessibilityIdentifier("logout");
  root->addSubview(btnLogout);

  // The links share the bottom row in equal parts, underlined like links.
  const CGFloat linkWidth = width / kLinkButtons.size();
  const CGFloat linkY = bounds.maxY() - kBottomInset - kRowHeight;
  btnConsent.clear();
  for (std::size_t i = 0; i < kLinkButtons.size(); ++i) {
    auto link =
        MakeButton(CGRect(kMargin + linkWidth * i, linkY, linkWidth, kRowHeight),
                   std::string(kLinkButtons[i].title), UIColor::darkGray(),
                   UIViewAutoresizing::flexibleTopMargin | UIViewAutoresizing::flexibleWidth |
                       UIViewAutoresizing::flexibleLeftMargin | UIViewAutoresizing::flexibleRightMargin);
    link->setTag(kLinkButtons[i].tag);
    underline(*link);
    root->addSubview(link);
    btnConsent.push_back(std::move(link));
  }

  // A controller that no shared_ptr owns cannot be a target; its buttons stay
  // unwired.
  if (!self) return;
  btnCancel->addTarget(self, &LogoutController::onCancelButtonTapped, UIControlEvent::touchUpInside);
  btnLogout->addTarget(self, &LogoutController::onLogoutButtonTapped, UIControlEvent::touchUpInside);
  for (const auto& link : btnConsent) {
    link->addTarget(self, &LogoutController::onConsentButtonsTaped, UIControlEvent::touchUpInside);
  }
}

void LogoutController::viewDidLoad() {
  UIViewController::viewDidLoad();
  requestBalanceAndArticle();
}

void LogoutController::onCancelButtonTapped(const std::any& /*sender*/) { dismiss(/*animated=*/true); }

void LogoutController::onLogoutButtonTapped(const std::any& /*sender*/) { requestLogout(); }

void LogoutController::onConsentButtonsTaped(const std::shared_ptr<UIButton>& sender) {
  if (sender) openUrl(*sender);
}

void LogoutController::requestBalanceAndArticle() {
  BalanceAndArticleParam param;
  param.customerId = global.getCustomerId();
  param.publisherId = global.publisherId();

  // Both closures hold the screen until the call is over; it is released on
  // the main loop.
  auto screen = std::make_shared<MainThreadRelease<LogoutController>>(selfAs(this));
  NetworkManager::shared().getBalanceAndArticles(
      param,
      [screen](BalanceAndArticleData answer) {
        MainLoop::main().post([screen, answer = std::move(answer)] {
          const auto& self = screen->get();
          if (!self || !answer.data || !self->lblBalance) return;
          self->lblBalance->setText(BalanceText(*answer.data));
        });
      },
      [screen, reporter = reporter](std::string message) {
        LogLine(message);
        ReportFailure(reporter, ServiceCall::getBalanceAndArticles, std::move(message));
      });
}

void LogoutController::requestLogout() {
  LogoutParam param;
  param.deviceKey = global.getDeviceKey();
  param.email = global.getEmail();

  auto screen = std::make_shared<MainThreadRelease<LogoutController>>(selfAs(this));
  NetworkManager::shared().logout(
      param,
      // The answer's contents do not matter: once the service has answered at
      // all, the reader is logged out here too.
      [screen](LogoutData /*answer*/) {
        MainLoop::main().post([screen] {
          const auto& self = screen->get();
          if (!self) return;
          GlobalVariable& global = self->global;
          self->dismiss(/*animated=*/true, [&global, reporter = self->reporter] {
            // Reported before the paywalls hear of it and ask for new bids,
            // so the host hears the logout before the cards come back.
            if (reporter.listening()) reporter.report({.kind = PaywallEventKind::logout});
            // Observers run first and still find the session that is ending.
            NotificationCenter::defaultCenter().post(kSessionEndedNotification);
            global.logout();
          });
        });
      },
      [screen, reporter = reporter](std::string message) {
        LogLine(message);
        ReportFailure(reporter, ServiceCall::logout, std::move(message));
      });
}

}  // namespace obolo
