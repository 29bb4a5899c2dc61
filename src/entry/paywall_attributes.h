// Records a host may fill to describe how a publisher wants the paywall to look
// and read.
//
// No operation of the kit takes, stores or reads them: the card's texts come
// from the service's bid and its logo from the Obolo configuration. They are
// kept for hosts that describe their publishers in one place.

#ifndef OBOLO_ENTRY_PAYWALL_ATTRIBUTES_H_
#define OBOLO_ENTRY_PAYWALL_ATTRIBUTES_H_

#include <memory>
#include <string>

namespace obolo {

// Shared by reference, like the objects a host passes around; every field
// starts empty.
class UIAttributes {
 public:
  // The publisher's logo address and the card's texts: titles, the unlock
  // button's text, and the texts before and after the reader logs in.
  std::string logoUrl;
  std::string title;
  std::string miniTitle;
  std::string subTitle;
  std::string footerTitle;
  std::string unlockArticle;
  std::string preLoginText;
  std::string postLoginText;

  UIAttributes() = default;  // every text empty
};

class PaywallAttributes {
 public:
  PaywallAttributes() = default;  // empty texts, false, a new UIAttributes

  // The publisher's main colour (hexadecimal text), the article's category,
  // and whether the article should unlock as the paywall loads.
  std::string primaryColor;
  std::string category;
  bool unlockOnLoad = false;
  // Each PaywallAttributes owns a UIAttributes of its own from construction;
  // assigning replaces it.
  std::shared_ptr<UIAttributes> ui = std::make_shared<UIAttributes>();
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_PAYWALL_ATTRIBUTES_H_
