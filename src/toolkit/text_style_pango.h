// How a TextStyle maps onto a Pango layout, shared by the measuring service and
// the renderer so both set text the same way.

#ifndef OBOLO_TOOLKIT_TEXT_STYLE_PANGO_H_
#define OBOLO_TOOLKIT_TEXT_STYLE_PANGO_H_

#include <pango/pango.h>

#include "toolkit/text_layout.h"

namespace obolo {

// A description of `font` in the toolkit's family, sized in points as
// absolute units (so no resolution is involved). The caller frees it.
PangoFontDescription* NewPangoFontDescription(const UIFont& font);

// Sets font, wrapping, line limit, truncation and alignment on `layout` for
// lines `width` points wide (unbounded for 0 or less).
void ApplyTextStyle(PangoLayout* layout, const TextStyle& style, CGFloat width);

// Points a fontconfig-based font map at the toolkit's own fonts and options
// (kit_fonts.h). False, changing nothing, when the fonts cannot be loaded or
// the map is not fontconfig-based.
bool UseKitFonts(PangoFontMap* font_map);

// Rendering options both engines use on their contexts: glyph positions are
// not rounded to whole device units, so a text's width does not depend on the
// scale it is drawn at.
void ApplyKitContextOptions(PangoContext* context);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_TEXT_STYLE_PANGO_H_
