#include "toolkit/text_style_pango.h"

#include <pango/pangofc-fontmap.h>

#include "toolkit/kit_fonts.h"

namespace obolo {
namespace {

void Substitute(FcPattern* pattern, gpointer /*data*/) { ApplyKitFontOptions(pattern); }

}  // namespace

bool UseKitFonts(PangoFontMap* font_map) {
  const KitFonts& fonts = KitFontConfiguration();
  if (fonts.config == nullptr || !PANGO_IS_FC_FONT_MAP(font_map)) return false;
  pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(font_map), fonts.config);
  pango_fc_font_map_set_default_substitute(PANGO_FC_FONT_MAP(font_map), &Substitute, nullptr, nullptr);
  return true;
}

PangoFontDescription* NewPangoFontDescription(const UIFont& font) {
  PangoFontDescription* description = pango_font_description_new();
  pango_font_description_set_family(description, kKitFontFamily);
  pango_font_description_set_weight(description,
                                    font.weight() == UIFont::Weight::bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_absolute_size(description, font.pointSize() * PANGO_SCALE);
  return description;
}

void ApplyTextStyle(PangoLayout* layout, const TextStyle& style, CGFloat width) {
  PangoFontDescription* description = NewPangoFontDescription(style.font);
  pango_layout_set_font_description(layout, description);
  pango_font_description_free(description);

  pango_layout_set_width(layout, width > 0 ? static_cast<int>(width * PANGO_SCALE) : -1);
  pango_layout_set_wrap(layout,
                        style.lineBreakMode == NSLineBreakMode::byCharWrapping ? PANGO_WRAP_CHAR : PANGO_WRAP_WORD_CHAR);

  PangoEllipsizeMode ellipsize = PANGO_ELLIPSIZE_NONE;
  switch (style.lineBreakMode) {
    case NSLineBreakMode::byTruncatingHead:
      ellipsize = PANGO_ELLIPSIZE_START;
      break;
    case NSLineBreakMode::byTruncatingMiddle:
      ellipsize = PANGO_ELLIPSIZE_MIDDLE;
      break;
    case NSLineBreakMode::byTruncatingTail:
      ellipsize = PANGO_ELLIPSIZE_END;
      break;
    case NSLineBreakMode::byWordWrapping:
    case NSLineBreakMode::byCharWrapping:
    case NSLineBreakMode::byClipping:
      // The platform ends a limited label's last line with an ellipsis in the
      // wrapping modes too; clipping cuts it.
      ellipsize = style.lineBreakMode == NSLineBreakMode::byClipping ? PANGO_ELLIPSIZE_NONE : PANGO_ELLIPSIZE_END;
      break;
  }
  if (style.numberOfLines > 0) {
    pango_layout_set_ellipsize(layout, ellipsize);
    // A negative height is a number of lines.
    pango_layout_set_height(layout, -style.numberOfLines);
  } else {
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_NONE);
  }

  PangoAlignment alignment = PANGO_ALIGN_LEFT;
  if (style.alignment == NSTextAlignment::center) alignment = PANGO_ALIGN_CENTER;
  if (style.alignment == NSTextAlignment::right) alignment = PANGO_ALIGN_RIGHT;
  pango_layout_set_alignment(layout, alignment);
}

void ApplyKitContextOptions(PangoContext* context) { pango_context_set_round_glyph_positions(context, FALSE); }

}  // namespace obolo
