#include "toolkit/pango_text_layout.h"

#include <pango/pangoft2.h>

#include <algorithm>
#include <cmath>

#include "toolkit/kit_fonts.h"
#include "toolkit/text_style_pango.h"

namespace obolo {
namespace {

CGFloat Points(int pango_units) { return static_cast<CGFloat>(pango_units) / PANGO_SCALE; }

}  // namespace

PangoTextLayout::~PangoTextLayout() {
  if (context_ != nullptr) g_object_unref(context_);
  if (font_map_ != nullptr) g_object_unref(font_map_);
}

bool PangoTextLayout::ready() {
  if (tried_) return context_ != nullptr;
  tried_ = true;
  font_map_ = pango_ft2_font_map_new();
  if (!UseKitFonts(font_map_)) {
    g_object_unref(font_map_);
    font_map_ = nullptr;
    return false;
  }
  context_ = pango_font_map_create_context(font_map_);
  ApplyKitContextOptions(context_);
  return true;
}

std::string PangoTextLayout::error() {
  std::lock_guard<std::mutex> lock(mutex_);
  ready();
  return KitFontConfiguration().error;
}

TextLayout PangoTextLayout::layout(std::string_view text, const TextStyle& style, CGFloat width) {
  TextLayout result;
  if (text.empty()) return result;
  std::lock_guard<std::mutex> lock(mutex_);
  if (!ready()) return result;

  PangoLayout* layout = pango_layout_new(context_);
  pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
  ApplyTextStyle(layout, style, width);

  const bool ellipsized = pango_layout_is_ellipsized(layout);
  PangoLayoutIter* iter = pango_layout_get_iter(layout);
  do {
    const PangoLayoutLine* line = pango_layout_iter_get_line_readonly(iter);
    PangoRectangle logical;
    pango_layout_iter_get_line_extents(iter, nullptr, &logical);
    TextLine out;
    out.start = static_cast<std::size_t>(std::max(line->start_index, 0));
    out.length = static_cast<std::size_t>(std::max(line->length, 0));
    out.x = Points(logical.x);
    out.top = Points(logical.y);
    out.width = Points(logical.width);
    out.height = Points(logical.height);
    out.baseline = Points(pango_layout_iter_get_baseline(iter));
    result.lines.push_back(out);
  } while (pango_layout_iter_next_line(iter));
  pango_layout_iter_free(iter);
  g_object_unref(layout);

  // Pango limits lines only when it truncates; clipping keeps the first lines.
  if (style.numberOfLines > 0 && result.lines.size() > static_cast<std::size_t>(style.numberOfLines)) {
    result.lines.resize(static_cast<std::size_t>(style.numberOfLines));
  }
  if (ellipsized && !result.lines.empty()) {
    TextLine& last = result.lines.back();
    last.truncated = true;
    last.length = text.size() - std::min(last.start, text.size());
  }
  CGFloat right = 0;
  CGFloat bottom = 0;
  for (const TextLine& line : result.lines) {
    right = std::max(right, line.width);
    bottom = std::max(bottom, line.top + line.height);
  }
  result.size = CGSize{std::ceil(right), std::ceil(bottom)};
  return result;
}

}  // namespace obolo
