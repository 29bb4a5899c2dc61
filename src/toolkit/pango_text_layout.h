// The default text layout service: Pango (with its FreeType back end, which
// needs no drawing library) over the toolkit's own fonts (kit_fonts.h).
//
// The renderer draws with Pango over the same fonts and options, so a line
// measured here is the line drawn there. Fonts load at the first layout; when
// they cannot, error() says why and every text lays out empty. Thread-safe:
// one layout at a time.
//
// The last few hundred layouts are kept: a publisher's cards repeat the same
// texts (the title, the links, the button) article after article, and the
// layout pass asks for the same text at the same width on every pass.

#ifndef OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_
#define OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_

#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

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

  struct Key {
    std::string text;
    TextStyle style;
    CGFloat width;
    friend bool operator==(const Key&, const Key&) = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const;
  };
  using Recent = std::list<std::pair<Key, TextLayout>>;  // most recent first

  std::mutex mutex_;
  Recent recent_;                                                           // guarded by mutex_
  std::unordered_map<Key, Recent::iterator, KeyHash> recent_index_;       // guarded by mutex_
  bool tried_ = false;
  PangoFontMap* font_map_ = nullptr;
  PangoContext* context_ = nullptr;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_PANGO_TEXT_LAYOUT_H_
