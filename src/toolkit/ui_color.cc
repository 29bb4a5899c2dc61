#include "toolkit/ui_color.h"

#include <ostream>

namespace obolo {

std::ostream& operator<<(std::ostream& out, const UIColor& color) {
  return out << "UIColor(" << color.red() << ", " << color.green() << ", " << color.blue() << ", "
             << color.alpha() << ")";
}

}  // namespace obolo
