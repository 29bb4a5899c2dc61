#include "toolkit/render/draw_text.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <mutex>

#include "toolkit/text_layout.h"
#include "toolkit/text_style_pango.h"

namespace obolo {
namespace {

// The cairo side's font map and context, made once over the toolkit's fonts.
struct TextEngine {
  PangoFontMap* font_map = nullptr;
  PangoContext* context = nullptr;
};

TextEngine* Engine() {
  static TextEngine* const engine = [] {
    auto* made = new TextEngine();  // kept for the process's life
    PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    if (map == nullptr || !UseKitFonts(map)) {
      if (map != nullptr) g_object_unref(map);
      return made;
    }
    made->font_map = map;
    made->context = pango_font_map_create_context(map);
    ApplyKitContextOptions(made->context);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(made->context, options);
    cairo_font_options_destroy(options);
    return made;
  }();
  return engine;
}

std::mutex& EngineMutex() {
  static std::mutex* const mutex = new std::mutex();
  return *mutex;
}

guint16 Channel(double value) { return static_cast<guint16>(std::clamp(value, 0.0, 1.0) * 65535.0 + 0.5); }

void AddColor(PangoAttrList* list, const UIColor& color, guint start, guint end) {
  PangoAttribute* foreground =
      pango_attr_foreground_new(Channel(color.red()), Channel(color.green()), Channel(color.blue()));
  foreground->start_index = start;
  foreground->end_index = end;
  pango_attr_list_insert(list, foreground);
  PangoAttribute* alpha = pango_attr_foreground_alpha_new(Channel(color.alpha()));
  alpha->start_index = start;
  alpha->end_index = end;
  pango_attr_list_insert(list, alpha);
}

// The label's attributes that fall on the bytes [start, start + length), moved
// to the line's own offsets.
PangoAttrList* LineAttributes(const UILabel& label, std::size_t start, std::size_t length) {
  PangoAttrList* list = pango_attr_list_new();
  AddColor(list, label.textColor(), 0, static_cast<guint>(length));
  const auto& attributed = label.attributedText();
  if (!attributed) return list;
  for (const NSAttributedString::Attribute& attribute : attributed->attributes()) {
    const std::size_t from = std::max(attribute.range.location, start);
    const std::size_t to = std::min(attribute.range.location + attribute.range.length, start + length);
    if (from >= to) continue;
    const guint a = static_cast<guint>(from - start);
    const guint b = static_cast<guint>(to - start);
    if (attribute.key == NSAttributedStringKey::foregroundColor) {
      if (const auto* color = std::get_if<UIColor>(&attribute.value)) AddColor(list, *color, a, b);
    } else if (attribute.key == NSAttributedStringKey::underlineColor) {
      if (const auto* color = std::get_if<UIColor>(&attribute.value)) {
        PangoAttribute* underline =
            pango_attr_underline_color_new(Channel(color->red()), Channel(color->green()), Channel(color->blue()));
        underline->start_index = a;
        underline->end_index = b;
        pango_attr_list_insert(list, underline);
      }
    } else if (attribute.key == NSAttributedStringKey::underlineStyle) {
      if (const auto* style = std::get_if<NSUnderlineStyle>(&attribute.value)) {
        PangoUnderline kind = PANGO_UNDERLINE_NONE;
        if (*style == NSUnderlineStyle::single) kind = PANGO_UNDERLINE_SINGLE;
        if (*style == NSUnderlineStyle::thick) kind = PANGO_UNDERLINE_SINGLE;
        if (*style == NSUnderlineStyle::doubleLine) kind = PANGO_UNDERLINE_DOUBLE;
        PangoAttribute* underline = pango_attr_underline_new(kind);
        underline->start_index = a;
        underline->end_index = b;
        pango_attr_list_insert(list, underline);
      }
    }
  }
  return list;
}

// Draws `layout` (one line) with its left end at x and its baseline at y.
void Show(DrawContext& context, PangoLayout* layout, double x, double baseline) {
  cairo_t* cr = context.cr();
  const double ascent = static_cast<double>(pango_layout_get_baseline(layout)) / PANGO_SCALE;
  PangoRectangle logical;
  pango_layout_get_extents(layout, nullptr, &logical);
  cairo_move_to(cr, x - static_cast<double>(logical.x) / PANGO_SCALE, baseline - ascent);
  pango_cairo_show_layout(cr, layout);
  context.check();
}

PangoLayout* NewLayout(cairo_t* cr, const TextEngine& engine) {
  pango_cairo_update_context(cr, engine.context);
  return pango_layout_new(engine.context);
}

}  // namespace

void DrawLabel(DrawContext& context, const UILabel& label) {
  const auto& text = label.text();
  if (!text || text->empty()) return;
  const CGSize size = label.bounds().size;
  TextLayout lines = TextLayoutService::shared()->layout(*text, label.textStyle(), size.width);
  if (lines.lines.size() > 1 && lines.size.height > size.height + 0.5) {
    // A label squeezed below its text shows the lines that fit, the last one
    // truncated, as the platform's labels do.
    int fitting = 0;
    for (const TextLine& line : lines.lines) {
      if (line.top + line.height > size.height + 0.5) break;
      ++fitting;
    }
    TextStyle fewer = label.textStyle();
    fewer.numberOfLines = std::max(1, fitting);
    lines = TextLayoutService::shared()->layout(*text, fewer, size.width);
  }
  if (lines.lines.empty()) return;

  std::lock_guard<std::mutex> lock(EngineMutex());
  const TextEngine& engine = *Engine();
  if (engine.context == nullptr) {
    context.fail("text cannot be drawn: the fonts did not load");
    return;
  }
  cairo_t* cr = context.cr();
  const double top = label.bounds().minY() + (size.height - lines.size.height) / 2;
  const double left = label.bounds().minX();
  for (const TextLine& line : lines.lines) {
    const std::size_t start = std::min(line.start, text->size());
    const std::size_t length = std::min(line.length, text->size() - start);
    PangoLayout* layout = NewLayout(cr, engine);
    pango_layout_set_text(layout, text->data() + start, static_cast<int>(length));
    TextStyle style = label.textStyle();
    style.alignment = NSTextAlignment::left;  // the line's position is already aligned
    style.numberOfLines = 1;
    if (line.truncated) {
      ApplyTextStyle(layout, style, size.width);
    } else {
      ApplyTextStyle(layout, style, 0);
    }
    PangoAttrList* attributes = LineAttributes(label, start, length);
    pango_layout_set_attributes(layout, attributes);
    pango_attr_list_unref(attributes);
    Show(context, layout, left + line.x, top + line.baseline);
    g_object_unref(layout);
  }
}

void DrawTextLine(DrawContext& context, const std::string& text, const UIFont& font, UIColor color, double x,
                  double baseline) {
  if (text.empty()) return;
  std::lock_guard<std::mutex> lock(EngineMutex());
  const TextEngine& engine = *Engine();
  if (engine.context == nullptr) {
    context.fail("text cannot be drawn: the fonts did not load");
    return;
  }
  PangoLayout* layout = NewLayout(context.cr(), engine);
  pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
  TextStyle style;
  style.font = font;
  ApplyTextStyle(layout, style, 0);
  PangoAttrList* attributes = pango_attr_list_new();
  AddColor(attributes, color, 0, static_cast<guint>(text.size()));
  pango_layout_set_attributes(layout, attributes);
  pango_attr_list_unref(attributes);
  Show(context, layout, x, baseline);
  g_object_unref(layout);
}

}  // namespace obolo
