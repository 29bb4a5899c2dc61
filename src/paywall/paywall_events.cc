// What the paywall tells the host's observers (entry/paywall_observer.h), one
// event per step of the purchase:
//
//   decision      not applicable, card shown, or article revealed (already paid)
//   unlock        unlock tapped (with or without consent); login opened
//   login         login completed (the page's keys came back) or closed with Done
//   accept        article revealed (paid now)
//   any call      service call failed, with the call and its failure text
//
// A call with no answer at all (no network, the service down) calls neither
// of its handlers and leaves the screen as it was, so observers hear nothing
// of it either: they hear what the reader saw happen.

#include <utility>

#include "paywall/card_content.h"
#include "paywall/paywall_vc.h"
#include "platform/log.h"

namespace obolo {
namespace {

void LogFailure(std::string message) { LogLine(message); }

}  // namespace

void PaywallVC::report(PaywallEventKind kind) const { reporter.report({.kind = kind}); }

void PaywallVC::reportCardShown(const DataSet& data) const {
  // The price the card is about to show: the bid's when it brings settings,
  // otherwise the card keeps what it shows now.
  std::string price = data.paywallSettings ? CardContentFor(*data.paywallSettings).price.value_or("")
                                           : lblObCustomerPrice->text().value_or("");
  reporter.report({.kind = PaywallEventKind::cardShown, .priceText = std::move(price), .position = position});
}

void PaywallVC::reportRevealed(bool paidNow) const {
  reporter.report({.kind = PaywallEventKind::articleRevealed, .paidNow = paidNow});
}

void PaywallVC::reportFailure(ServiceCall call, const std::string& failureText) const {
  reporter.report({.kind = PaywallEventKind::serviceCallFailed, .call = call, .failureText = failureText});
}

OnFailure PaywallVC::onFailure(ServiceCall call) const {
  // With nobody listening as the call goes out, the plain writer, which
  // captures and costs nothing; an observer registered while the call is on
  // its way does not hear of its failure.
  if (!reporter.listening()) return LogFailure;
  return [reporter = reporter, call](std::string message) {
    LogLine(message);
    reporter.report(
        {.kind = PaywallEventKind::serviceCallFailed, .call = call, .failureText = std::move(message)});
  };
}

}  // namespace obolo
