#include "toolkit/ui_window_scene.h"

#include "toolkit/ui_screen.h"

namespace obolo {

UIStatusBarManager::UIStatusBarManager()
    : status_bar_frame_(0, 0, UIScreen::main().bounds().width(), kDefaultHeight) {}

}  // namespace obolo
