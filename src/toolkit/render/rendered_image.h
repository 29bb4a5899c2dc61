// A picture the renderer made (or the reason it could not make one).
//
// Owns a cairo image surface: 32-bit ARGB, premultiplied, rows top to bottom.
// Copies share the surface. Pixels can be read back (for tests) and the whole
// written as PNG; a failing write is an error text, never a crash.

#ifndef OBOLO_TOOLKIT_RENDER_RENDERED_IMAGE_H_
#define OBOLO_TOOLKIT_RENDER_RENDERED_IMAGE_H_

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

typedef struct _cairo_surface cairo_surface_t;

namespace obolo {

// One pixel's colour, not premultiplied, 0 to 255 per channel.
struct RGBA {
  std::uint8_t red = 0;    // red channel
  std::uint8_t green = 0;  // green channel
  std::uint8_t blue = 0;   // blue channel
  std::uint8_t alpha = 0;  // opacity: 0 transparent, 255 opaque
  friend bool operator==(const RGBA&, const RGBA&) = default;
};

// Readable values in test failures.
std::ostream& operator<<(std::ostream& out, const RGBA& pixel);

// A picture the renderer drew (or read), or why there is none: drawing can
// fail (no fonts, no memory) and a host's test should say why, not crash.
// Owns its pixels.
class RenderedImage {
 public:
  // A failure.
  static RenderedImage Failed(std::string error);
  // Takes ownership of `surface` (an image surface); a surface in an error
  // state becomes a failure.
  static RenderedImage Adopt(cairo_surface_t* surface);
  // Reads a PNG file; a failure when it is missing or not a PNG.
  static RenderedImage FromPngFile(const std::string& path);

  // Whether there is a picture; if not, error() says why.
  bool ok() const { return surface_ != nullptr; }
  const std::string& error() const { return error_; }

  int width() const;   // in pixels; 0 for a failure
  int height() const;  // in pixels; 0 for a failure
  // The pixel at (x, y); transparent black outside the picture.
  RGBA pixel(int x, int y) const;

  // The picture as PNG bytes; none (with `error` set) when it cannot be encoded.
  std::optional<std::string> png(std::string* error = nullptr) const;
  // Writes the PNG to `path`; returns an error text, empty on success.
  std::string writePng(const std::string& path) const;

  // The surface itself, for drawing it elsewhere; null for a failure.
  cairo_surface_t* surface() const { return surface_.get(); }

 private:
  struct SurfaceRelease {
    void operator()(cairo_surface_t* surface) const;
  };

  std::shared_ptr<cairo_surface_t> surface_;
  std::string error_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_RENDER_RENDERED_IMAGE_H_
