#include "toolkit/ui_screen.h"

namespace obolo {

UIScreen& UIScreen::main() {
  static UIScreen* const screen = new UIScreen();
  return *screen;
}

}  // namespace obolo
