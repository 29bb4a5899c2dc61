#include "toolkit/render/shapes.h"

#include <algorithm>
#include <numbers>

namespace obolo {

void RoundedRectangle(cairo_t* cr, CGRect rect, double radius) {
  cairo_new_path(cr);
  const double r = std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) / 2);
  if (r <= 0) {
    cairo_rectangle(cr, rect.minX(), rect.minY(), rect.width(), rect.height());
    return;
  }
  constexpr double kQuarter = std::numbers::pi / 2;
  cairo_arc(cr, rect.maxX() - r, rect.minY() + r, r, -kQuarter, 0);
  cairo_arc(cr, rect.maxX() - r, rect.maxY() - r, r, 0, kQuarter);
  cairo_arc(cr, rect.minX() + r, rect.maxY() - r, r, kQuarter, 2 * kQuarter);
  cairo_arc(cr, rect.minX() + r, rect.minY() + r, r, 2 * kQuarter, 3 * kQuarter);
  cairo_close_path(cr);
}

}  // namespace obolo
