// The paywall prompt's text, with a hint added to the funds message.

#ifndef OBOLO_UI_LABEL_HELPERS_H_
#define OBOLO_UI_LABEL_HELPERS_H_

#include <string_view>

#include "toolkit/ui_label.h"

namespace obolo {

// The service's message that the wallet lacks funds, as the service sends it:
// a leading space and a typographic apostrophe (U+2019).
inline constexpr std::string_view kInsufficientFundsMessage = " you don\u2019t have sufficient funds.";

// Logs `text` as one line, then sets it as the label's text. When `text`,
// lower-cased, is exactly the funds message, " Please check your mail." is
// appended (to the text in its own case). Main thread only.
void replace(UILabel& label, std::string_view text);

}  // namespace obolo

#endif  // OBOLO_UI_LABEL_HELPERS_H_
