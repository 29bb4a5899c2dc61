#include "entry/paywall_event.h"

namespace obolo {
namespace {

// Built by appending: GCC 12 at -O3 reports a false -Wrestrict in chains of
// std::string's operator+ (GCC bug 105329).
void AppendQuoted(std::string& out, std::string_view text) {
  out += '"';
  out += text;
  out += '"';
}

}  // namespace

std::string_view ToString(PaywallEventKind kind) {
  switch (kind) {
    case PaywallEventKind::notApplicable:
      return "not applicable";
    case PaywallEventKind::cardShown:
      return "card shown";
    case PaywallEventKind::unlockTapped:
      return "unlock tapped";
    case PaywallEventKind::loginOpened:
      return "login opened";
    case PaywallEventKind::loginCompleted:
      return "login completed";
    case PaywallEventKind::loginClosed:
      return "login closed with Done";
    case PaywallEventKind::articleRevealed:
      return "article revealed";
    case PaywallEventKind::walletOpened:
      return "wallet opened";
    case PaywallEventKind::logout:
      return "logout";
    case PaywallEventKind::serviceCallFailed:
      return "service call failed";
  }
  return "unknown event";
}

std::string_view ToString(ServiceCall call) {
  switch (call) {
    case ServiceCall::createLoggedOutBid:
      return "createLoggedOutBid";
    case ServiceCall::createLoggedInBid:
      return "createLoggedInBid";
    case ServiceCall::customerBid:
      return "customerBid";
    case ServiceCall::getNextAccessToken:
      return "getNextAccessToken";
    case ServiceCall::acceptBid:
      return "acceptBid";
    case ServiceCall::getBalanceAndArticles:
      return "getBalanceAndArticles";
    case ServiceCall::logout:
      return "logout";
  }
  return "unknown call";
}

std::string_view ToString(Position position) {
  switch (position) {
    case Position::top:
      return "top";
    case Position::bottom:
      return "bottom";
    case Position::center:
      break;
  }
  return "center";
}

std::string Describe(const PaywallEvent& event) {
  std::string text(ToString(event.kind));
  switch (event.kind) {
    case PaywallEventKind::cardShown:
      text += ", price ";
      AppendQuoted(text, event.priceText);
      text += ", at ";
      text += ToString(event.position);
      break;
    case PaywallEventKind::unlockTapped:
      text += event.consent ? ", consent given" : ", no consent";
      break;
    case PaywallEventKind::articleRevealed:
      text += event.paidNow ? ", paid now" : ", already paid";
      break;
    case PaywallEventKind::serviceCallFailed:
      text = ToString(event.call);
      text += " failed: ";
      AppendQuoted(text, event.failureText);
      break;
    default:
      break;
  }
  return text;
}

}  // namespace obolo
