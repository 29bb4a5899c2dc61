// The drawing properties of a view that the kit sets: shadow, rounding and
// border.
//
// Every view owns exactly one layer for its whole life (UIView::layer()). The
// defaults are the platform's: an opaque black shadow colour at opacity 0, an
// offset of (0, -3), a radius of 3, square corners, no clipping, no border
// (width 0, black).

#ifndef OBOLO_TOOLKIT_CA_LAYER_H_
#define OBOLO_TOOLKIT_CA_LAYER_H_

#include <optional>

#include "toolkit/geometry.h"
#include "toolkit/ui_color.h"

namespace obolo {

class CALayer {
 public:
  // The shadow: its colour (none draws no shadow), opacity from 0 to 1, offset
  // and blur radius in points; then the corner rounding and whether the layer
  // clips its content to its rounded bounds. Each setter takes effect at once.
  std::optional<UIColor> shadowColor() const { return shadow_color_; }
  void setShadowColor(std::optional<UIColor> color) { shadow_color_ = color; }
  float shadowOpacity() const { return shadow_opacity_; }
  void setShadowOpacity(float opacity) { shadow_opacity_ = opacity; }
  CGSize shadowOffset() const { return shadow_offset_; }
  void setShadowOffset(CGSize offset) { shadow_offset_ = offset; }
  CGFloat shadowRadius() const { return shadow_radius_; }
  void setShadowRadius(CGFloat radius) { shadow_radius_ = radius; }
  CGFloat cornerRadius() const { return corner_radius_; }
  void setCornerRadius(CGFloat radius) { corner_radius_ = radius; }
  bool masksToBounds() const { return masks_to_bounds_; }
  void setMasksToBounds(bool masks) { masks_to_bounds_ = masks; }
  // Drawn inside the bounds, over the content, following the corner radius.
  CGFloat borderWidth() const { return border_width_; }
  void setBorderWidth(CGFloat width) { border_width_ = width; }
  UIColor borderColor() const { return border_color_; }
  void setBorderColor(UIColor color) { border_color_ = color; }

 private:
  std::optional<UIColor> shadow_color_ = UIColor::black();
  float shadow_opacity_ = 0;
  CGSize shadow_offset_{0, -3};
  CGFloat shadow_radius_ = 3;
  CGFloat corner_radius_ = 0;
  bool masks_to_bounds_ = false;
  CGFloat border_width_ = 0;
  UIColor border_color_ = UIColor::black();
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_CA_LAYER_H_
