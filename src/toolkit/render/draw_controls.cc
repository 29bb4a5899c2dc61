#include "toolkit/render/draw_controls.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "toolkit/render/draw_text.h"
#include "toolkit/render/shapes.h"

namespace obolo {
namespace {

constexpr UIColor kSpinnerGrey{0.56, 0.56, 0.58, 1};
constexpr UIColor kPageField{0.95, 0.95, 0.97, 1};
constexpr UIColor kOutline{0.78, 0.78, 0.80, 1};
constexpr UIColor kAddressText{0.24, 0.24, 0.26, 1};
constexpr UIColor kNoteText{0.56, 0.56, 0.58, 1};

void SetColor(cairo_t* cr, const UIColor& color, double alpha = 1) {
  cairo_set_source_rgba(cr, color.red(), color.green(), color.blue(), color.alpha() * alpha);
}

// A small closed padlock whose body's top left corner is at (x, y).
void Padlock(cairo_t* cr, double x, double y, const UIColor& color) {
  SetColor(cr, color);
  RoundedRectangle(cr, CGRect(x, y + 5, 10, 8), 1.5);
  cairo_fill(cr);
  cairo_set_line_width(cr, 1.6);
  cairo_arc_negative(cr, x + 5, y + 5, 3.2, 0, std::numbers::pi);
  cairo_arc(cr, x + 5, y + 5, 3.2, std::numbers::pi, 2 * std::numbers::pi);
  cairo_stroke(cr);
}

}  // namespace

void DrawActivityIndicator(DrawContext& context, const UIActivityIndicatorView& indicator) {
  const CGRect bounds = indicator.bounds();
  const CGSize natural = indicator.intrinsicContentSize();
  const double diameter = std::min({natural.width, bounds.width(), bounds.height()});
  if (diameter <= 0) return;
  cairo_t* cr = context.cr();
  cairo_save(cr);
  cairo_translate(cr, bounds.midX(), bounds.midY());
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_width(cr, diameter * 0.09);
  constexpr int kSpokes = 8;
  for (int i = 0; i < kSpokes; ++i) {
    const double angle = -std::numbers::pi / 2 + i * 2 * std::numbers::pi / kSpokes;
    SetColor(cr, kSpinnerGrey, 0.25 + 0.75 * (kSpokes - 1 - i) / (kSpokes - 1));
    cairo_move_to(cr, std::cos(angle) * diameter * 0.22, std::sin(angle) * diameter * 0.22);
    cairo_line_to(cr, std::cos(angle) * diameter * 0.45, std::sin(angle) * diameter * 0.45);
    cairo_stroke(cr);
  }
  cairo_restore(cr);
  context.check();
}

void DrawWebPage(DrawContext& context, const WKWebView& web) {
  const CGRect bounds = web.bounds();
  cairo_t* cr = context.cr();
  cairo_save(cr);
  cairo_rectangle(cr, bounds.minX(), bounds.minY(), bounds.width(), bounds.height());
  cairo_clip(cr);
  SetColor(cr, kPageField);
  cairo_paint(cr);
  SetColor(cr, kOutline);
  cairo_set_line_width(cr, 1);
  cairo_rectangle(cr, bounds.minX() + 0.5, bounds.minY() + 0.5, bounds.width() - 1, bounds.height() - 1);
  cairo_stroke(cr);

  // The address bar.
  const CGRect bar(bounds.minX() + 12, bounds.minY() + 10, std::max(bounds.width() - 24, 0.0), 34);
  RoundedRectangle(cr, bar, 10);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_fill_preserve(cr);
  SetColor(cr, kOutline);
  cairo_stroke(cr);
  Padlock(cr, bar.minX() + 12, bar.minY() + 9, kAddressText);
  // The bar shows the site's host, as a phone's address bar does (the
  // padlock stands for https); what has no host shows whole ("about:blank").
  const auto url = web.url();
  std::string address = url ? url->host() : std::string();
  if (address.empty()) address = url ? url->absoluteString() : "about:blank";
  cairo_save(cr);
  cairo_rectangle(cr, bar.minX() + 30, bar.minY(), std::max(bar.width() - 40, 0.0), bar.height());
  cairo_clip(cr);
  DrawTextLine(context, address, UIFont::systemFont(12), kAddressText, bar.minX() + 30, bar.midY() + 4);
  cairo_restore(cr);

  DrawTextLine(context, "Web page \u2014 shown by the browser", UIFont::systemFont(13), kNoteText,
               bounds.minX() + 24, bar.maxY() + 40);
  cairo_restore(cr);
  context.check();
}

}  // namespace obolo
