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

// The screen's look: a column under a Cancel bar, 24 points from the sides
// and at most 440 wide (centred on wide screens), the links along the bottom.
constexpr CGFloat kMargin = 24;
constexpr CGFloat kMaxWidth = 440;
constexpr CGFloat kTopInset = 48;     // below the status bar
constexpr CGFloat kBottomInset = 34;  // above the home indicator

// The kit's blue, as on the floating wallet button.
constexpr UIColor kKitBlue{40.0 / 255.0, 128.0 / 255.0, 235.0 / 255.0, 1.0};
constexpr UIColor kInk{0.11, 0.11, 0.12, 1};
constexpr UIColor kSecondaryInk{0.42, 0.42, 0.45, 1};
constexpr UIColor kPanelTint{0.94, 0.96, 0.99, 1};

struct LinkButton {
  int tag;
  std::string_view title;
};
// The tags are what openUrl() picks the address by.
constexpr std::array<LinkButton, 3> kLinkButtons{{{0, "Terms"}, {1, "Privacy"}, {2, "Contact"}}};

std::shared_ptr<UILabel> MakeLabel(std::string text, UIFont font, UIColor color) {
  auto label = std::make_shared<UILabel>();
  label->setTranslatesAutoresizingMaskIntoConstraints(false);
  label->setText(std::move(text));
  label->setFont(font);
  label->setTextColor(color);
  return label;
}

std::shared_ptr<UIButton> MakeButton(std::string title, UIColor titleColor, UIFont font) {
  auto button = std::make_shared<UIButton>(UIButton::ButtonType::system);
  button->setTranslatesAutoresizingMaskIntoConstraints(false);
  button->setTitle(std::move(title), UIControlState::normal);
  button->setTitleColor(titleColor, UIControlState::normal);
  button->titleLabel()->setFont(font);
  button->setContentEdgeInsets({8, 8, 8, 8});
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
  auto self = selfAs(this);

  // The column everything but Cancel and the links sits in.
  auto column = std::make_shared<UIView>();
  column->setTranslatesAutoresizingMaskIntoConstraints(false);
  root->addSubview(column);

  btnCancel = MakeButton("Cancel", kKitBlue, UIFont::systemFont(17));
  btnCancel->setAccessibilityIdentifier("cancel");
  root->addSubview(btnCancel);

  auto heading = MakeLabel("Your wallet", UIFont::boldSystemFont(30), kInk);
  auto panel = std::make_shared<UIView>();
  panel->setTranslatesAutoresizingMaskIntoConstraints(false);
  panel->setBackgroundColor(kPanelTint);
  panel->layer().setCornerRadius(18);
  auto caption = MakeLabel("Balance", UIFont::systemFont(15), kSecondaryInk);
  lblBalance = MakeLabel(kBalancePlaceholder, UIFont::boldSystemFont(34), kInk);
  lblBalance->setAccessibilityIdentifier("balance");
  auto note = MakeLabel("Pay for single articles from this wallet, on every site that takes Obolo.",
                        UIFont::systemFont(13), kSecondaryInk);
  note->setNumberOfLines(0);

  btnLogout = MakeButton("Logout", UIColor::white(), UIFont::boldSystemFont(17));
  btnLogout->setBackgroundColor(kKitBlue);
  btnLogout->layer().setCornerRadius(14);
  btnLogout->setAccessibilityIdentifier("logout");

  column->addSubview(heading);
  column->addSubview(panel);
  panel->addSubview(caption);
  panel->addSubview(lblBalance);
  panel->addSubview(note);
  column->addSubview(btnLogout);

  std::vector<std::shared_ptr<NSLayoutConstraint>> layout{
      btnCancel->topAnchor().equalTo(root->topAnchor(), kTopInset),
      root->trailingAnchor().equalTo(btnCancel->trailingAnchor(), kMargin - 8),
      column->topAnchor().equalTo(btnCancel->bottomAnchor(), 16),
      column->centerXAnchor().equalTo(root->centerXAnchor()),
      column->widthAnchor().lessThanOrEqualToConstant(kMaxWidth),
      column->leadingAnchor().greaterThanOrEqualTo(root->leadingAnchor(), kMargin),
      heading->topAnchor().equalTo(column->topAnchor()),
      panel->topAnchor().equalTo(heading->bottomAnchor(), 20),
      caption->topAnchor().equalTo(panel->topAnchor(), 20),
      lblBalance->topAnchor().equalTo(caption->bottomAnchor(), 4),
      note->topAnchor().equalTo(lblBalance->bottomAnchor(), 12),
      panel->bottomAnchor().equalTo(note->bottomAnchor(), 20),
      btnLogout->topAnchor().equalTo(panel->bottomAnchor(), 28),
      btnLogout->heightAnchor().equalToConstant(52),
      column->bottomAnchor().equalTo(btnLogout->bottomAnchor()),
  };
  // Wide as the screen allows, within the margins.
  auto leading = column->leadingAnchor().equalTo(root->leadingAnchor(), kMargin);
  leading->setPriority(UILayoutPriorityDefaultHigh);
  layout.push_back(leading);
  for (const auto& view : std::initializer_list<std::shared_ptr<UIView>>{heading, panel, btnLogout}) {
    layout.push_back(view->leadingAnchor().equalTo(column->leadingAnchor()));
    layout.push_back(column->trailingAnchor().equalTo(view->trailingAnchor()));
  }
  for (const auto& view : std::initializer_list<std::shared_ptr<UIView>>{caption, lblBalance, note}) {
    layout.push_back(view->leadingAnchor().equalTo(panel->leadingAnchor(), 20));
    layout.push_back(panel->trailingAnchor().equalTo(view->trailingAnchor(), 20));
  }

  // The links share the bottom row, underlined like links: Privacy in the
  // middle, the others beside it.
  btnConsent.clear();
  for (const LinkButton& link : kLinkButtons) {
    auto button = MakeButton(std::string(link.title), UIColor::darkGray(), UIFont::systemFont(13));
    button->setTag(link.tag);
    underline(*button);
    root->addSubview(button);
    btnConsent.push_back(std::move(button));
  }
  layout.push_back(root->bottomAnchor().equalTo(btnConsent[1]->bottomAnchor(), kBottomInset));
  layout.push_back(btnConsent[1]->centerXAnchor().equalTo(root->centerXAnchor()));
  layout.push_back(btnConsent[1]->leadingAnchor().equalTo(btnConsent[0]->trailingAnchor(), 12));
  layout.push_back(btnConsent[2]->leadingAnchor().equalTo(btnConsent[1]->trailingAnchor(), 12));
  layout.push_back(btnConsent[0]->centerYAnchor().equalTo(btnConsent[1]->centerYAnchor()));
  layout.push_back(btnConsent[2]->centerYAnchor().equalTo(btnConsent[1]->centerYAnchor()));
  NSLayoutConstraint::activate(layout);

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
