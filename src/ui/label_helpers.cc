#include "ui/label_helpers.h"

#include <string>

#include "platform/log.h"
#include "ui/unicode_text.h"

namespace obolo {

void replace(UILabel& label, std::string_view text) {
  LogLine(text);
  // Only ASCII letters (and the Kelvin sign) lower-case into the ASCII letters
  // of the message, so an ASCII case fold decides the match exactly.
  if (LowercaseForAsciiComparison(text) == kInsufficientFundsMessage) {
    label.setText(std::string(text) + " Please check your mail.");
  } else {
    label.setText(std::string(text));
  }
}

}  // namespace obolo
