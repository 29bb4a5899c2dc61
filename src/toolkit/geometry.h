// Geometry in points, as the platform's Core Graphics types.
//
// The toolkit has no transforms: a view's frame is its bounds' size placed
// around its centre, and a vector (a translation, say) reads the same in every
// view's coordinates.

#ifndef OBOLO_TOOLKIT_GEOMETRY_H_
#define OBOLO_TOOLKIT_GEOMETRY_H_

#include <iosfwd>

namespace obolo {

// Lengths and coordinates, in points.
using CGFloat = double;

// A point in the screen's coordinates: points, y growing downwards.
struct CGPoint {
  CGFloat x = 0;  // points from the left
  CGFloat y = 0;  // points from the top
  friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

// A width and a height in points.
struct CGSize {
  // Never negative for the kit's own views; the platform allows it.
  CGFloat width = 0;
  CGFloat height = 0;
  friend bool operator==(const CGSize&, const CGSize&) = default;
};

// A rectangle: its origin (top left) and its size.
struct CGRect {
  // Top left corner, then extent.
  CGPoint origin;
  CGSize size;

  // The empty rectangle at (0, 0); from an origin and a size; from its four numbers.
  constexpr CGRect() = default;
  constexpr CGRect(CGPoint o, CGSize s) : origin(o), size(s) {}
  constexpr CGRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) : origin{x, y}, size{width, height} {}

  // Extent and edges: min is the left or top edge, max the right or bottom
  // one, mid the centre line.
  CGFloat width() const { return size.width; }
  CGFloat height() const { return size.height; }
  CGFloat minX() const { return origin.x; }
  CGFloat maxX() const { return origin.x + size.width; }
  CGFloat midX() const { return origin.x + size.width / 2; }
  CGFloat minY() const { return origin.y; }
  CGFloat maxY() const { return origin.y + size.height; }
  CGFloat midY() const { return origin.y + size.height / 2; }

  // The rectangle shrunk by dx on the left and right and dy on the top and
  // bottom (grown for negative values), about the same centre.
  CGRect insetBy(CGFloat dx, CGFloat dy) const {
    return CGRect(origin.x + dx, origin.y + dy, size.width - 2 * dx, size.height - 2 * dy);
  }
  // Whether `point` lies inside; the right and bottom edges are outside.
  bool contains(CGPoint point) const {
    return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
  }

  friend bool operator==(const CGRect&, const CGRect&) = default;
};

// Insets from each edge of a rectangle, as the platform's UIEdgeInsets.
struct UIEdgeInsets {
  CGFloat top = 0;     // from the top edge, in points
  CGFloat left = 0;    // from the left edge
  CGFloat bottom = 0;  // from the bottom edge
  CGFloat right = 0;   // from the right edge
  friend bool operator==(const UIEdgeInsets&, const UIEdgeInsets&) = default;
};

// Readable values in test failures.
std::ostream& operator<<(std::ostream& out, const CGPoint& point);
std::ostream& operator<<(std::ostream& out, const CGSize& size);
std::ostream& operator<<(std::ostream& out, const CGRect& rect);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_GEOMETRY_H_
