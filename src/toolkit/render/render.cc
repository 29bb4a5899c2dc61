#include "toolkit/render/render.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "toolkit/render/box_blur.h"
#include "toolkit/render/draw_context.h"
#include "toolkit/render/draw_controls.h"
#include "toolkit/render/draw_image.h"
#include "toolkit/render/draw_text.h"
#include "toolkit/render/shapes.h"
#include "toolkit/text_layout.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/ui_image_view.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_visual_effect_view.h"
#include "toolkit/wk_web_view.h"

namespace obolo {
namespace {

// Larger pictures are refused: 16384 pixels is cairo's own limit per side.
constexpr int kMaxPixels = 16384;
// How far a blur view smears what lies beneath it, in points.
constexpr double kBlurRadius = 24;

void SetColor(cairo_t* cr, const UIColor& color, double alpha = 1) {
  cairo_set_source_rgba(cr, color.red(), color.green(), color.blue(), color.alpha() * alpha);
}

// The veil each blur style lays over the blurred content.
UIColor BlurTint(UIBlurEffect::Style style) {
  switch (style) {
    case UIBlurEffect::Style::extraLight:
      return UIColor::withWhite(0.97, 0.6);
    case UIBlurEffect::Style::light:
      return UIColor::withWhite(0.97, 0.35);
    case UIBlurEffect::Style::dark:
      return UIColor::withWhite(0.11, 0.55);
    case UIBlurEffect::Style::regular:
      return UIColor::withWhite(0.97, 0.25);
    case UIBlurEffect::Style::prominent:
      return UIColor::withWhite(0.97, 0.5);
  }
  return UIColor::clear();
}

double CornerRadius(const UIView& view) { return view.layer().cornerRadius(); }

CGRect LocalBounds(const UIView& view) { return view.bounds(); }

void DrawBlurView(DrawContext& context, const UIVisualEffectView& view) {
  if (!view.effect()) return;
  const CGRect bounds = LocalBounds(view);
  const int radius = std::max(1, static_cast<int>(std::lround(kBlurRadius * context.scale())));
  const PixelRect area = context.toPixels(bounds.minX(), bounds.minY(), bounds.width(), bounds.height(), 2 * radius);
  cairo_surface_t* beneath = context.copyBeneath(area);
  cairo_t* cr = context.cr();
  cairo_save(cr);
  RoundedRectangle(cr, bounds, CornerRadius(view));
  cairo_clip(cr);
  if (beneath != nullptr) {
    BoxBlur(beneath, radius);
    cairo_save(cr);
    cairo_identity_matrix(cr);
    cairo_set_source_surface(cr, beneath, area.x, area.y);
    cairo_paint(cr);
    cairo_restore(cr);
    cairo_surface_destroy(beneath);
  }
  SetColor(cr, BlurTint(view.effect()->style()));
  cairo_paint(cr);
  cairo_restore(cr);
  context.check();
}

// What the view itself shows, between its background and its subviews.
void DrawContent(DrawContext& context, const UIView& view) {
  if (const auto* label = dynamic_cast<const UILabel*>(&view)) {
    DrawLabel(context, *label);
  } else if (const auto* image = dynamic_cast<const UIImageView*>(&view)) {
    if (image->image()) {
      DrawImage(context, *image->image(), LocalBounds(view), view.contentMode(), view.tintColor());
    }
  } else if (const auto* blur = dynamic_cast<const UIVisualEffectView*>(&view)) {
    DrawBlurView(context, *blur);
  } else if (const auto* spinner = dynamic_cast<const UIActivityIndicatorView*>(&view)) {
    DrawActivityIndicator(context, *spinner);
  } else if (const auto* web = dynamic_cast<const WKWebView*>(&view)) {
    DrawWebPage(context, *web);
  }
}

void DrawTree(DrawContext& context, const UIView& view);

// Background, content, subviews and border, in the view's own coordinates
// (the bounds' origin at the bounds' position).
void DrawSelf(DrawContext& context, const UIView& view) {
  cairo_t* cr = context.cr();
  const CGRect bounds = LocalBounds(view);
  const CALayer& layer = view.layer();
  if (auto background = view.backgroundColor(); background && background->alpha() > 0) {
    RoundedRectangle(cr, bounds, layer.cornerRadius());
    SetColor(cr, *background);
    cairo_fill(cr);
  }
  cairo_save(cr);
  if (layer.masksToBounds()) {
    RoundedRectangle(cr, bounds, layer.cornerRadius());
    cairo_clip(cr);
  }
  DrawContent(context, view);
  for (const auto& child : view.subviews()) DrawTree(context, *child);
  cairo_restore(cr);
  if (layer.borderWidth() > 0 && layer.borderColor().alpha() > 0) {
    const double inset = layer.borderWidth() / 2;
    RoundedRectangle(cr, bounds.insetBy(inset, inset), std::max(0.0, layer.cornerRadius() - inset));
    SetColor(cr, layer.borderColor());
    cairo_set_line_width(cr, layer.borderWidth());
    cairo_stroke(cr);
  }
  context.check();
}

bool CastsShadow(const CALayer& layer) {
  return layer.shadowOpacity() > 0 && layer.shadowColor() && layer.shadowColor()->alpha() > 0;
}

// The shadow of what `drawn` (the view's layer) holds within the view's
// bounds, blurred and offset, under it.
void DrawShadow(DrawContext& context, cairo_surface_t* drawn, const UIView& view) {
  const CALayer& layer = view.layer();
  const double scale = context.scale();
  const int radius = static_cast<int>(std::lround(layer.shadowRadius() * scale));
  const double dx = layer.shadowOffset().width * scale;
  const double dy = layer.shadowOffset().height * scale;
  const CGRect bounds = LocalBounds(view);
  const PixelRect area =
      context.toPixels(bounds.minX(), bounds.minY(), bounds.width(), bounds.height(), 2 * radius + 1);
  if (area.empty()) return;
  cairo_surface_t* mask = cairo_image_surface_create(CAIRO_FORMAT_A8, area.width, area.height);
  cairo_t* copy = cairo_create(mask);
  cairo_set_source_surface(copy, drawn, -area.x, -area.y);
  cairo_set_operator(copy, CAIRO_OPERATOR_SOURCE);
  cairo_paint(copy);
  cairo_destroy(copy);
  BoxBlur(mask, radius);

  cairo_t* cr = context.cr();
  cairo_save(cr);
  cairo_identity_matrix(cr);
  SetColor(cr, *layer.shadowColor(), layer.shadowOpacity() * view.alpha());
  cairo_mask_surface(cr, mask, area.x + dx, area.y + dy);
  cairo_restore(cr);
  cairo_surface_destroy(mask);
  context.check();
}

void DrawTree(DrawContext& context, const UIView& view) {
  if (view.isHidden() || view.alpha() <= 0 || !context.error().empty()) return;
  cairo_t* cr = context.cr();
  cairo_save(cr);
  const CGRect frame = view.frame();
  const CGRect bounds = view.bounds();
  // The view's own coordinates: its bounds' origin sits at its frame's origin.
  cairo_translate(cr, frame.minX() - bounds.minX(), frame.minY() - bounds.minY());
  const bool shadow = CastsShadow(view.layer());
  const double alpha = std::min(1.0, view.alpha());
  if (shadow || alpha < 1) {
    context.pushLayer();
    DrawSelf(context, view);
    cairo_surface_t* drawn = context.popLayer();
    if (drawn != nullptr) {
      if (shadow) DrawShadow(context, drawn, view);
      cairo_t* parent = context.cr();
      cairo_save(parent);
      cairo_identity_matrix(parent);
      cairo_set_source_surface(parent, drawn, 0, 0);
      cairo_paint_with_alpha(parent, alpha);
      cairo_restore(parent);
      cairo_surface_destroy(drawn);
    }
  } else {
    DrawSelf(context, view);
  }
  cairo_restore(context.cr());
  context.check();
}

}  // namespace

RenderedImage RenderView(UIView& root, const RenderOptions& options) {
  if (!(options.scale >= 0.25 && options.scale <= 4)) {
    return RenderedImage::Failed("the scale must lie between 0.25 and 4");
  }
  if (options.size) {
    if (!(options.size->width > 0 && options.size->height > 0)) {
      return RenderedImage::Failed("the size must be positive");
    }
    root.setFrame(CGRect(root.frame().origin, *options.size));
  }
  root.layoutIfNeeded();
  const CGSize size = root.bounds().size;
  const double width = std::ceil(size.width * options.scale);
  const double height = std::ceil(size.height * options.scale);
  if (!(width >= 1 && height >= 1 && width <= kMaxPixels && height <= kMaxPixels)) {
    return RenderedImage::Failed("cannot draw a picture of " + std::to_string(width) + " x " +
                                 std::to_string(height) + " pixels");
  }
  if (const std::string fonts = TextLayoutService::shared()->error(); !fonts.empty()) {
    return RenderedImage::Failed("text cannot be drawn: " + fonts);
  }

  cairo_surface_t* canvas =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height));
  if (cairo_surface_status(canvas) != CAIRO_STATUS_SUCCESS) return RenderedImage::Adopt(canvas);
  std::string error;
  {
    DrawContext context(canvas, options.scale);
    if (options.background) {
      SetColor(context.cr(), *options.background);
      cairo_paint(context.cr());
    }
    // The root at the picture's top left, whatever its frame's origin.
    const CGRect frame = root.frame();
    cairo_translate(context.cr(), -frame.minX(), -frame.minY());
    DrawTree(context, root);
    context.check();
    error = context.error();
  }
  if (!error.empty()) {
    cairo_surface_destroy(canvas);
    return RenderedImage::Failed(error);
  }
  cairo_surface_flush(canvas);
  return RenderedImage::Adopt(canvas);
}

}  // namespace obolo
