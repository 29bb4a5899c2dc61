#include "toolkit/render/draw_context.h"

#include <algorithm>
#include <cmath>

namespace obolo {

DrawContext::DrawContext(cairo_surface_t* canvas, double scale)
    : scale_(scale), width_(cairo_image_surface_get_width(canvas)), height_(cairo_image_surface_get_height(canvas)) {
  layers_.push_back(Layer{canvas, cairo_create(canvas)});
  cairo_scale(layers_.back().cr, scale, scale);
}

DrawContext::~DrawContext() {
  for (auto it = layers_.rbegin(); it != layers_.rend(); ++it) {
    cairo_destroy(it->cr);
    if (it != std::prev(layers_.rend())) cairo_surface_destroy(it->surface);
  }
}

void DrawContext::pushLayer() {
  cairo_matrix_t matrix;
  cairo_get_matrix(cr(), &matrix);
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_);
  cairo_t* context = cairo_create(surface);
  cairo_set_matrix(context, &matrix);
  layers_.push_back(Layer{surface, context});
  check();
}

cairo_surface_t* DrawContext::popLayer() {
  Layer top = layers_.back();
  if (layers_.size() == 1) return nullptr;
  if (cairo_status(top.cr) != CAIRO_STATUS_SUCCESS) fail(cairo_status_to_string(cairo_status(top.cr)));
  layers_.pop_back();
  cairo_destroy(top.cr);
  cairo_surface_flush(top.surface);
  return top.surface;
}

cairo_surface_t* DrawContext::copyBeneath(PixelRect rect) const {
  if (rect.empty()) return nullptr;
  cairo_surface_t* copy = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, rect.width, rect.height);
  cairo_t* context = cairo_create(copy);
  for (const Layer& layer : layers_) {
    cairo_surface_flush(layer.surface);
    cairo_set_source_surface(context, layer.surface, -rect.x, -rect.y);
    cairo_paint(context);
  }
  cairo_destroy(context);
  cairo_surface_flush(copy);
  return copy;
}

PixelRect DrawContext::toPixels(double x, double y, double width, double height, int margin) const {
  double x0 = x, y0 = y, x1 = x + width, y1 = y + height;
  cairo_user_to_device(cr(), &x0, &y0);
  cairo_user_to_device(cr(), &x1, &y1);
  const int left = std::max(0, static_cast<int>(std::floor(std::min(x0, x1))) - margin);
  const int top = std::max(0, static_cast<int>(std::floor(std::min(y0, y1))) - margin);
  const int right = std::min(width_, static_cast<int>(std::ceil(std::max(x0, x1))) + margin);
  const int bottom = std::min(height_, static_cast<int>(std::ceil(std::max(y0, y1))) + margin);
  return PixelRect{left, top, right - left, bottom - top};
}

void DrawContext::fail(const std::string& what) {
  if (error_.empty()) error_ = "cairo: " + what;
}

void DrawContext::check() {
  if (const cairo_status_t status = cairo_status(cr()); status != CAIRO_STATUS_SUCCESS) {
    fail(cairo_status_to_string(status));
  }
}

}  // namespace obolo
