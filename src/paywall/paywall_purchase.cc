// The paywall's purchase logic: which service call goes out, with what, what
// is stored from the answers, and which screen action each answer asks for.
// The views themselves are paywall_card.cc's and paywall_screen.cc's.

#include <utility>

#include "entry/constants.h"
#include "network/network_manager.h"
#include "paywall/paywall_decision.h"
#include "paywall/paywall_vc.h"
#include "platform/log.h"
#include "platform/main_loop.h"

namespace obolo {

void PaywallVC::configureView() {
  if (!global.isOBTokenExist()) {
    requestCreateLoggedOutBid();
  } else if (global.isOBTokenValid()) {
    requestCreateLoggedInBid();
  } else {
    getNextAccesToken();
  }
}

// What both bids say about the article, from the configuration in force now.
CreateLoggedBidParam PaywallVC::bidParam(bool loggedIn) const {
  CreateLoggedBidParam param;
  if (loggedIn) param.accessKey = global.accessKey();
  param.category = global.category();
  if (loggedIn) param.customerId = global.getCustomerId();
  param.articleUrl = global.articleUrl();
  param.publisherCustomerId = global.publisherCustomerId();
  param.publisherDomain = global.publisherDomain();
  param.ipAddress = std::string(IP_ADDRESS);
  param.userAgent = std::string(USER_AGENT);
  return param;
}

// A bid's answer, on the session's thread: decided on the main loop.
Completion<OboloData> PaywallVC::decideOnMainLoop() {
  return [me = self()](OboloData envelope) {
    MainLoop::main().post([me, envelope = std::move(envelope)] {
      if (envelope.data) me->decidePaywall(*envelope.data);
    });
  };
}

// Both bids may be sent from the HTTP session's thread (after a token
// refresh); they read only the shared configuration and the session store.
void PaywallVC::requestCreateLoggedOutBid() {
  NetworkManager::shared().createLoggedOutBid(bidParam(/*loggedIn=*/false), decideOnMainLoop(),
                                              onFailure(ServiceCall::createLoggedOutBid));
}

void PaywallVC::requestCreateLoggedInBid() {
  NetworkManager::shared().createLoggedInBid(bidParam(/*loggedIn=*/true), decideOnMainLoop(),
                                             onFailure(ServiceCall::createLoggedInBid));
}

// The refresh's answers stay on the HTTP session's thread: they only write the
// session store and start the next bid, and touch no view.
void PaywallVC::getNextAccesToken() {
  NextTokenParam param;
  param.deviceKey = global.getDeviceKey();
  param.email = global.getEmail();
  param.refreshToken = global.getRefreshToken();
  LogLine("getNextAccesToken refreshToken: " + param.refreshToken, LogContent::kCredential);
  auto me = self();
  NetworkManager::shared().getNextAccessToken(
      param,
      [me](NextTokenData envelope) {
        if (envelope.data) me->saveCustomerData(*envelope.data, /*isExpired=*/true);
      },
      [me](std::string message) {
        // The reader goes on as logged out for this article; the stored
        // session is kept for the next attempt.
        LogLine(message);
        if (me->reporter.listening()) me->reportFailure(ServiceCall::getNextAccessToken, message);
        me->requestCreateLoggedOutBid();
      });
}

void PaywallVC::saveCustomerData(const CustomerInfoSet& data, bool isExpired) {
  {
    const PreferenceWriteGroup session = global.sessionWriteGroup();
    global.setAccessToken(data.accessToken.value_or(""));
    global.setDeviceKey(data.deviceKey.value_or(""));
    if (data.customer) {
      global.setEmail(data.customer->email.value_or(""));
      global.setCustomerId(data.customer->id.value_or(0));
    }
    // A refresh keeps the refresh token already stored.
    if (!isExpired) global.setRefreshToken(data.refreshToken.value_or(""));
  }
  // The next bid goes out once the session is on disk.
  if (isExpired) requestCreateLoggedInBid();
}

void PaywallVC::decidePaywall(const DataSet& data) {
  const PaywallDecision decision = DecidePaywall(data, isRedirectToPaywall);
  switch (decision.outcome) {
    case PaywallDecision::Outcome::kHide:
      hidePaywall();
      if (reporter.listening()) report(PaywallEventKind::notApplicable);
      return;
    case PaywallDecision::Outcome::kReveal:
      showPaywall();
      reveal();
      if (reporter.listening()) reportRevealed(/*paidNow=*/false);
      break;
    case PaywallDecision::Outcome::kShowCard:
      showPaywall();
      showCard();
      if (decision.transactionMode) transactionMode = *decision.transactionMode;
      if (decision.unlockButtonHidden) isUnlockButton(*decision.unlockButtonHidden);
      if (reporter.listening()) reportCardShown(data);
      break;
  }
  configurePaywall(data);
}

void PaywallVC::configurePaywall(const DataSet& with) {
  obBidId = with.oboloBidId.value_or(0);
  transactionMode = with.oboloTransactionMode.value_or("");
  global.setPublisherId(with.publisherId.value_or(0));
  if (with.paywallSettings) updateView(*with.paywallSettings);
}

void PaywallVC::requestCustomerBid(const std::string& deviceKey, const std::string& loginToken) {
  CustomerBidParam param;
  param.deviceKey = deviceKey;
  param.oboloBidId = obBidId;
  param.loginToken = loginToken;
  NetworkManager::shared().customerBid(
      param,
      [me = self()](OboloData envelope) {
        MainLoop::main().post([me, envelope = std::move(envelope)] {
          if (!envelope.data) return;
          const DataSet& data = *envelope.data;
          if (data.customerInfo) me->saveCustomerData(*data.customerInfo, /*isExpired=*/false);
          me->setSplashMessage(data.paywallSettings ? data.paywallSettings->obAutoUnlockText : std::nullopt);
          me->decidePaywall(data);
        });
      },
      onFailure(ServiceCall::customerBid));
}

void PaywallVC::requestAcceptBid() {
  AcceptBidParam param;
  param.oboloBidId = obBidId;
  param.oboloTransactionMode = transactionMode;
  // Every answer that decodes counts as paid, whatever its `success`: the
  // service has taken the bid, and the reader is never shown an error.
  NetworkManager::shared().acceptBid(
      param,
      [me = self()](OboloData) {
        MainLoop::main().post([me] {
          me->reveal();
          if (me->reporter.listening()) me->reportRevealed(/*paidNow=*/true);
        });
      },
      onFailure(ServiceCall::acceptBid));
}

}  // namespace obolo
