// How a presented screen covers its presenter, with the platform's raw values.
// The toolkit records the style; every style shows the presented view over the
// whole window.

#ifndef OBOLO_TOOLKIT_MODAL_PRESENTATION_STYLE_H_
#define OBOLO_TOOLKIT_MODAL_PRESENTATION_STYLE_H_

namespace obolo {

enum class UIModalPresentationStyle {
  automatic = -2,
  none = -1,
  fullScreen = 0,
  pageSheet = 1,
  formSheet = 2,
  currentContext = 3,
  custom = 4,
  overFullScreen = 5,
  overCurrentContext = 6,
  popover = 7,
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_MODAL_PRESENTATION_STYLE_H_
