// What drawing a tree needs beyond a cairo context: layers for alpha and
// shadows, and the pixels beneath a view for a blur.
//
// A layer is a transparent surface the size of the canvas with the same
// pixel grid, so layers composite onto each other (and onto the canvas) with
// no transform, and whatever lies beneath a point can be read from the canvas
// and the open layers in order. Internal to the renderer.

#ifndef OBOLO_TOOLKIT_RENDER_DRAW_CONTEXT_H_
#define OBOLO_TOOLKIT_RENDER_DRAW_CONTEXT_H_

#include <cairo.h>

#include <string>
#include <vector>

namespace obolo {

// A rectangle of whole pixels on the canvas.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool empty() const { return width <= 0 || height <= 0; }
};

class DrawContext {
 public:
  // Draws onto `canvas` (not owned) at `scale` pixels per point.
  DrawContext(cairo_surface_t* canvas, double scale);
  ~DrawContext();
  DrawContext(const DrawContext&) = delete;
  DrawContext& operator=(const DrawContext&) = delete;

  // The context to draw with now: the top layer's, else the canvas's.
  cairo_t* cr() const { return layers_.back().cr; }
  double scale() const { return scale_; }
  int width() const { return width_; }
  int height() const { return height_; }

  // Opens a layer that takes the current transform; drawing goes there until
  // popLayer(), which returns its surface (the caller destroys it).
  void pushLayer();
  cairo_surface_t* popLayer();

  // The canvas's pixels under `rect`, with every open layer composited on top:
  // what a blur view sees beneath it. A new image surface of the rect's size
  // (the caller destroys it); null when the rect is empty.
  cairo_surface_t* copyBeneath(PixelRect rect) const;

  // The rectangle (x, y, width, height) in the current user space, as whole
  // pixels on the canvas, grown by `margin` pixels and cut to the canvas.
  PixelRect toPixels(double x, double y, double width, double height, int margin) const;

  // Records the first failure of a drawing call; the render then fails.
  void fail(const std::string& what);
  // Checks the current context for a cairo error.
  void check();
  const std::string& error() const { return error_; }

 private:
  struct Layer {
    cairo_surface_t* surface;
    cairo_t* cr;
  };

  std::vector<Layer> layers_;  // [0] is the canvas, not owned
  double scale_;
  int width_;
  int height_;
  std::string error_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_DRAW_CONTEXT_H_
