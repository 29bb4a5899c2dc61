#include "toolkit/pango_text_layout.h"

#include <pango/pangoft2.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "toolkit/kit_fonts.h"
#include "toolkit/text_style_pango.h"

namespace obolo {
namespace {

CGFloat Points(int pango_units) { return static_cast<CGFloat>(pango_units) / PANGO_SCALE; }

// How many layouts are kept, and the longest text kept (a longer one, say an
// article's whole body, is laid out each time rather than held).
constexpr std::size_t kRecentLayouts = 256;
constexpr std::size_t kLongestKeptText = 2048;

}  // namespace

std::size_t PangoTextLayout::KeyHash::operator()(const Key& key) const {
  std::size_t hash = std::hash<std::string>()(key.text);
  auto mix = [&hash](std::size_t value) { hash ^= value + 0x9e3779b97f4a7c15ULL + (hash << 6) + (hash >> 2); };
  mix(std::hash<double>()(key.width));
  mix(std::hash<double>()(key.style.font.pointSize()));
  mix(static_cast<std::size_t>(key.style.font.weight()));
  mix(static_cast<std::size_t>(key.style.alignment));
  mix(static_cast<std::size_t>(key.style.numberOfLines));
  mix(static_cast<std::size_t>(key.style.lineBreakMode));
  return hash;
}

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
  Key key{std::string(text), style, width > 0 ? width : 0};
  if (auto found = recent_index_.find(key); found != recent_index_.end()) {
    recent_.splice(recent_.begin(), recent_, found->second);
    return found->second->second;
  }

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

  if (key.text.size() > kLongestKeptText) return result;
  recent_.emplace_front(std::move(key), result);
  recent_index_[recent_.front().first] = recent_.begin();
  if (recent_.size() > kRecentLayouts) {
    recent_index_.erase(recent_.back().first);
    recent_.pop_back();
  }
  return result;
}

}  // namespace obolo
