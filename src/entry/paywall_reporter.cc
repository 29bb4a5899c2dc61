#include "entry/paywall_reporter.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include "entry/credential_mask.h"
#include "entry/global_variable.h"
#include "platform/log.h"
#include "platform/main_loop.h"

namespace obolo {
namespace {

// The key of the attached reporter; only its address matters.
constexpr char kReporterKey = 0;

class ReporterHolder : public NSObject {
 public:
  explicit ReporterHolder(PaywallReporter reporter) : reporter(std::move(reporter)) {}
  const PaywallReporter reporter;
};

bool StillRegistered(const PaywallObserver* observer, const PaywallObservers* own) {
  return PaywallObservers::global().contains(observer) || (own != nullptr && own->contains(observer));
}

// "A paywall observer threw on "card shown": <what>", built by appending
// (GCC 12 at -O3 reports a false -Wrestrict in chains of operator+).
void LogObserverFault(const PaywallEvent& event, const char* what) {
  std::string line = "A paywall observer threw on \"";
  line += ToString(event.kind);
  line += '"';
  if (what != nullptr) {
    line += ": ";
    line += what;
  }
  LogLine(line);
}

// Main loop. Who hears the event is settled here, not when it was reported:
// an observer removed meanwhile does not hear it.
void Deliver(const PaywallObservers* own, const PaywallEvent& event) {
  std::vector<std::shared_ptr<PaywallObserver>> heard = PaywallObservers::global().snapshot();
  if (own != nullptr) {
    for (auto& observer : own->snapshot()) {
      if (std::find(heard.begin(), heard.end(), observer) == heard.end())
        heard.push_back(std::move(observer));
    }
  }
  for (const auto& observer : heard) {
    // An earlier observer may have removed this one.
    if (!StillRegistered(observer.get(), own)) continue;
    try {
      observer->onPaywallEvent(event);
    } catch (const std::exception& error) {
      LogObserverFault(event, error.what());
    } catch (...) {
      LogObserverFault(event, nullptr);
    }
  }
}

// The stored session's secrets, to be masked wherever they show up.
std::vector<std::string> StoredSecrets() {
  const GlobalVariable& global = GlobalVariable::shared();
  return {global.getAccessToken(), global.getRefreshToken(), global.getDeviceKey(), global.getEmail()};
}

}  // namespace

PaywallReporter::PaywallReporter(std::shared_ptr<PaywallObservers> observers, std::string articleUrl)
    : observers_(std::move(observers)), articleUrl_(std::move(articleUrl)) {}

bool PaywallReporter::anyObserver() const {
  return !PaywallObservers::global().empty() || (observers_ && !observers_->empty());
}

void PaywallReporter::report(PaywallEvent event) const {
  if (!listening() || !anyObserver()) return;
  event.articleUrl = articleUrl_;
  // The stored session is read only for a text that could carry part of it.
  const bool price = MayCarryCredential(event.priceText);
  const bool failure = MayCarryCredential(event.failureText);
  if (price || failure) {
    const std::vector<std::string> secrets = StoredSecrets();
    if (price) event.priceText = MaskCredentials(event.priceText, secrets);
    if (failure) event.failureText = MaskCredentials(event.failureText, secrets);
  }
  MainLoop::main().post([own = observers_, event = std::move(event)] { Deliver(own.get(), event); });
}

void AttachReporter(NSObject& object, PaywallReporter reporter) {
  object.setAssociatedObject(&kReporterKey, std::make_shared<ReporterHolder>(std::move(reporter)));
}

PaywallReporter AttachedReporter(const NSObject& object) {
  auto holder = object.associatedObject<ReporterHolder>(&kReporterKey);
  return holder ? holder->reporter : PaywallReporter();
}

}  // namespace obolo
