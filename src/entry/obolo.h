// The kit's front door.
//
// A host constructs an Obolo for an article screen with six texts and asks it to
// load the paywall into one of its screens:
//
//   obolo::Obolo obolo(accessKey, category, logoUrl, articleUrl, publisherCustomerId, publisherDomain);
//   obolo.loadPaywall(articleScreen, articleContentView, obolo::Position::bottom);
//
// Construction copies the texts into the shared GlobalVariable, so the latest
// construction configures every paywall. The object keeps nothing else but its
// observers, and may be dropped once the paywall is loaded: the host's view
// hierarchy owns the paywall from then on, and the paywall works by itself.
//
// Main thread only.

#ifndef OBOLO_ENTRY_OBOLO_H_
#define OBOLO_ENTRY_OBOLO_H_

#include <memory>
#include <string>

#include "entry/global_variable.h"
#include "entry/paywall_observer.h"
#include "entry/position.h"
#include "toolkit/ui_view.h"
#include "toolkit/ui_view_controller.h"

namespace obolo {

class Obolo {
 public:
  // Nothing is checked or trimmed; empty texts are stored as given.
  // publisherId is left as it is.
  Obolo(std::string accessKey, std::string category, std::string logoUrl, std::string articleUrl,
        std::string publisherCustomerId, std::string publisherDomain);

  // Lays a new paywall over the whole host screen, on top of its views, with
  // the paywall's own blur and the card centred. Each call adds another.
  void loadPaywall(const std::shared_ptr<UIViewController>& in);

  // Lays a new paywall over `content`, the view that shows the article: the
  // paywall blurs that view itself and places its card at `position`.
  void loadPaywall(const std::shared_ptr<UIViewController>& in, const std::shared_ptr<UIView>& content,
                   Position position);

  // Observers of the paywalls this object loads (entry/paywall_observer.h).
  // The paywalls share this object's list: an observer added or removed here
  // takes effect for every paywall it loaded, before or after, and those
  // paywalls keep the list when the object is dropped. A host that wants to
  // remove an observer later keeps the object, or registers globally instead.
  // Copies of the object share the list.
  void addObserver(std::shared_ptr<PaywallObserver> observer);
  void removeObserver(const std::shared_ptr<PaywallObserver>& observer);

 private:
  void loadView(const std::shared_ptr<UIViewController>& in);
  void loadView(const std::shared_ptr<UIViewController>& in, const std::shared_ptr<UIView>& content,
                Position position);

  GlobalVariable& global;
  std::shared_ptr<PaywallObservers> observers_;
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_OBOLO_H_
