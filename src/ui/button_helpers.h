// Helpers on buttons: a template tint for the image, an underlined title, and
// the link a consent button opens. Main thread only.

#ifndef OBOLO_UI_BUTTON_HELPERS_H_
#define OBOLO_UI_BUTTON_HELPERS_H_

#include <string_view>

#include "toolkit/ui_button.h"

namespace obolo {

// Sets, for the normal state, a copy of the image view's current image drawn as
// a template (or no image when there is none), then sets the button's tint.
void setImageTintColor(UIButton& button, UIColor color);

// Replaces the normal-state title with an attributed copy of the title label's
// text, underlined (single) over its whole length, underline and text in the
// normal-state title colour. A button with no title colour for the normal state
// uses its title label's current text colour. Nothing happens when the title
// label has no text (none or empty).
void underline(UIButton& button);

// The link for a button tag: 0 the terms, 2 the contact address, anything else
// the privacy page.
std::string_view ConsentUrlForTag(int tag);

// Opens the link for the button's tag through UIApplication::shared().open, with
// no options and no completion; the outcome is not examined.
void openUrl(const UIButton& button);

}  // namespace obolo

#endif  // OBOLO_UI_BUTTON_HELPERS_H_
