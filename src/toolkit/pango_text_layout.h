// The default text layout service: Pango (with its FreeType back end, which
// needs no drawing library) over the toolkit's own fonts (kit_fonts.h).
//
// The renderer draws with Pango over the same fonts and options, so a line
// measured here is the line drawn there. Fonts load at the first layout; when
// they cannot, error() says why and every text lays out empty. Thread-safe:
// one layout at a time.

#ifndef OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_
#define OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_

#include <mutex>
#include <string>

#include "toolkit/text_layout.h"

typedef struct _PangoContext PangoContext;
typedef struct _PangoFontMap PangoFontMap;

namespace obolo {

class PangoTextLayout : public TextLayoutService {
 public:
  PangoTextLayout() = default;
  ~PangoTextLayout() override;
  PangoTextLayout(const PangoTextLayout&) = delete;
  PangoTextLayout& operator=(const PangoTextLayout&) = delete;

  TextLayout layout(std::string_view text, const TextStyle& style, CGFloat width) override;
  std::string error() override;

 private:
  // REQUIRES: mutex_ held. False when the fonts cannot be loaded.
  bool ready();

  std::mutex mutex_;
  bool tried_ = false;
  PangoFontMap* font_map_ = nullptr;
  PangoContext* context_ = nullptr;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_
