// Loading what text measurement needs before the first label is measured.
//
// The first measurement in a process loads the fonts (some 15 to 40 ms on a
// server core, more on a phone), and the first in each further face and size
// sets that size up (a few hundred microseconds each). A screen measured for
// the first time pays all of it in its first layout pass, after its content
// arrived; warming overlaps it with the wait for that content.

#ifndef OBOLO_TOOLKIT_TEXT_LAYOUT_WARMUP_H_
#define OBOLO_TOOLKIT_TEXT_LAYOUT_WARMUP_H_

#include "toolkit/ui_view.h"

namespace obolo {

// Measures a line in the default faces and in the face and size of every
// label under `root` (button titles included). Call on the main loop, where a
// wait costs nothing, such as while an answer is on its way.
void WarmTextLayout(const UIView& root);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_TEXT_LAYOUT_WARMUP_H_
