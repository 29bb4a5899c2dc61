// The reader this host app plays: waits for the card, taps unlock, logs in on
// the login page the kit opens, and pays.

#ifndef OBOLO_HOST_APP_READER_H_
#define OBOLO_HOST_APP_READER_H_

#include <obolo/toolkit/ui_view_controller.h>

#include <memory>
#include <string>

namespace host_app {

// Plays one purchase on `host`, the screen the paywall was loaded into, running
// the kit's main loop meanwhile; `email` is the reader's wallet account. True
// when the article was paid for and the wallet button is on the host screen;
// otherwise `failure` says which step did not happen. Main thread only.
bool PlayPurchase(const std::shared_ptr<obolo::UIViewController>& host, const std::string& email,
                  std::string& failure);

}  // namespace host_app

#endif  // OBOLO_HOST_APP_READER_H_
