#include "toolkit/render/draw_image.h"

#include <algorithm>

#include "toolkit/render/image_surface.h"

namespace obolo {

CGRect ImageDestination(CGSize image, CGRect bounds, UIViewContentMode mode) {
  using enum UIViewContentMode;
  if (image.width <= 0 || image.height <= 0) return CGRect(bounds.origin, CGSize{0, 0});
  switch (mode) {
    case scaleToFill:
    case redraw:
      return bounds;
    case scaleAspectFit:
    case scaleAspectFill: {
      const double sx = bounds.width() / image.width;
      const double sy = bounds.height() / image.height;
      const double s = mode == scaleAspectFit ? std::min(sx, sy) : std::max(sx, sy);
      const CGSize size{image.width * s, image.height * s};
      return CGRect(bounds.midX() - size.width / 2, bounds.midY() - size.height / 2, size.width, size.height);
    }
    default:
      break;
  }
  // The modes that keep the image's size: placed by the edges they name.
  double x = bounds.midX() - image.width / 2;
  double y = bounds.midY() - image.height / 2;
  if (mode == left || mode == topLeft || mode == bottomLeft) x = bounds.minX();
  if (mode == right || mode == topRight || mode == bottomRight) x = bounds.maxX() - image.width;
  if (mode == top || mode == topLeft || mode == topRight) y = bounds.minY();
  if (mode == bottom || mode == bottomLeft || mode == bottomRight) y = bounds.maxY() - image.height;
  return CGRect(x, y, image.width, image.height);
}

void DrawImage(DrawContext& context, const UIImage& image, CGRect bounds, UIViewContentMode mode, UIColor tint) {
  cairo_surface_t* pixels = NewImageSurface(image);
  if (pixels == nullptr) return;
  const CGSize size = image.size();
  const CGRect destination = ImageDestination(size, bounds, mode);
  if (destination.width() > 0 && destination.height() > 0) {
    cairo_t* cr = context.cr();
    cairo_save(cr);
    cairo_rectangle(cr, destination.minX(), destination.minY(), destination.width(), destination.height());
    cairo_clip(cr);
    cairo_translate(cr, destination.minX(), destination.minY());
    cairo_scale(cr, destination.width() / size.width, destination.height() / size.height);
    cairo_pattern_t* pattern = cairo_pattern_create_for_surface(pixels);
    cairo_pattern_set_filter(pattern, CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    if (image.renderingMode() == UIImageRenderingMode::alwaysTemplate) {
      cairo_set_source_rgba(cr, tint.red(), tint.green(), tint.blue(), tint.alpha());
      cairo_mask(cr, pattern);
    } else {
      cairo_set_source(cr, pattern);
      cairo_paint(cr);
    }
    cairo_pattern_destroy(pattern);
    cairo_restore(cr);
    context.check();
  }
  cairo_surface_destroy(pixels);
}

}  // namespace obolo
