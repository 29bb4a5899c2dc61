// Places the views of one layout scope from their constraints.
//
// A scope is a root view (placed by its frame, or a tree's root) and every
// descendant placed by constraints that is reached through views placed by
// constraints. The engine takes the constraints installed in the root and in
// those descendants, and for each constrained view its intrinsic size: the
// view's size ≥ intrinsic at its compression resistance priority and =
// intrinsic at its hugging priority (the platform's ≤, made an equality: a
// view no more important constraint sizes takes its content's size). The horizontal axis is solved first; the
// vertical one then asks each view for its intrinsic size at the width it was
// given, so wrapping text makes a view taller (intrinsicContentSizeForWidth).
//
// Values that nothing decides keep what the current frames say, so an
// ambiguous layout stays where it was. Items a constraint names must lie in
// the root's tree; views placed by frame are read where they are (a view
// placed by frame inside a constrained view counts at its position before the
// pass). A required constraint that cannot hold is broken and reported once
// through the log seam, as the platform does; lower priorities yield quietly.
// Frames are rounded to whole points, edge by edge, so neighbours stay
// neighbours.

#ifndef OBOLO_TOOLKIT_LAYOUT_ENGINE_H_
#define OBOLO_TOOLKIT_LAYOUT_ENGINE_H_

namespace obolo {

class UIView;

class LayoutEngine {
 public:
  // Solves the scope rooted at `root` and sets the frames of its constrained
  // views. Does nothing (cheaply) for a root without constraints in scope.
  static void solveScope(UIView& root);
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_LAYOUT_ENGINE_H_
