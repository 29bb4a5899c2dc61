// The kit's front door.
//
// A host constructs an Obolo for an article screen with six texts and asks it to
// load the paywall into one of its screens. Construction copies the texts into
// the shared GlobalVariable, so the latest construction configures every
// paywall. The object keeps nothing else and may be dropped once the paywall is
// loaded; the host's view hierarchy owns the paywall from then on.
//
// Main thread only.

#ifndef OBOLO_ENTRY_OBOLO_H_
#define OBOLO_ENTRY_OBOLO_H_

#include <string>

#include "entry/global_variable.h"
#include "entry/position.h"

namespace obolo {

class Obolo {
 public:
  // Nothing is checked or trimmed; empty texts are stored as given.
  // publisherId is left as it is.
  Obolo(std::string accessKey, std::string category, std::string logoUrl, std::string articleUrl,
        std::string publisherCustomerId, std::string publisherDomain);

 private:
  GlobalVariable& global;
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_OBOLO_H_
