// Where the paywall card sits over the host's content.

#ifndef OBOLO_ENTRY_POSITION_H_
#define OBOLO_ENTRY_POSITION_H_

namespace obolo {

// The paywall's own default is center.
enum class Position { top, center, bottom };

}  // namespace obolo

#endif  // OBOLO_ENTRY_POSITION_H_
