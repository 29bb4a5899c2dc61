// The kit's front door.
//
// A host constructs an Obolo for an article screen with six texts and asks it to
// load the paywall into one of its screens:
//
//   obolo::Obolo obolo(accessKey, category, logoUrl, articleUrl, publisherCustomerId, publisherDomain);
//   obolo.loadPaywall(articleScreen, articleContentView, obolo::Position::bottom);
//
// Construction copies the texts into the shared GlobalVariable, so the latest
// construction configures every paywall. The object keeps nothing else and may
// be dropped once the paywall is loaded: the host's view hierarchy owns the
// paywall from then on, and the paywall works by itself.
//
// Main thread only.

#ifndef OBOLO_ENTRY_OBOLO_H_
#define OBOLO_ENTRY_OBOLO_H_

#include <memory>
#include <string>

#include "entry/global_variable.h"
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

 private:
  void loadView(const std::shared_ptr<UIViewController>& in);
  void loadView(const std::shared_ptr<UIViewController>& in, const std::shared_ptr<UIView>& content,
                Position position);

  GlobalVariable& global;
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_OBOLO_H_
