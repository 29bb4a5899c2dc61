// The toolkit's display cycle: layouts asked for during a turn of the main
// loop run once, at the end of that turn.
//
// setNeedsLayout() on a view hands the view here; the first time, the cycle
// registers itself with the main loop as an end-of-turn observer. At the end
// of every turn that ran work, the cycle lays out the tree of each view handed
// over since (each tree once, from its root). A view that no shared_ptr owns
// yet (one being constructed) is not handed over; it is laid out with the tree
// it joins, since joining marks the new superview.
//
// Main thread only.

#ifndef OBOLO_TOOLKIT_LAYOUT_CYCLE_H_
#define OBOLO_TOOLKIT_LAYOUT_CYCLE_H_

namespace obolo {

class UIView;

class LayoutCycle {
 public:
  // Queues `view`'s tree for the end of the turn (once until it has run).
  static void schedule(UIView& view);
  // Lays out every queued tree now.
  static void flush();
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_LAYOUT_CYCLE_H_
