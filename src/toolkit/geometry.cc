#include "toolkit/geometry.h"

#include <ostream>

namespace obolo {

std::ostream& operator<<(std::ostream& out, const CGPoint& point) {
  return out << "(" << point.x << ", " << point.y << ")";
}

std::ostream& operator<<(std::ostream& out, const CGSize& size) {
  return out << "(" << size.width << " x " << size.height << ")";
}

std::ostream& operator<<(std::ostream& out, const CGRect& rect) {
  return out << "(" << rect.origin.x << ", " << rect.origin.y << ", " << rect.size.width << ", "
             << rect.size.height << ")";
}

}  // namespace obolo
