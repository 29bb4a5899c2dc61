// Lays text out in lines: the one place where text is measured, shared by the
// layout pass (a label's intrinsic size) and the renderer (where each line is
// drawn), so what is measured is what is drawn.
//
// The default service is PangoTextLayout (pango_text_layout.h); tests may
// install another. Texts are UTF-8; byte offsets refer to the text given.

#ifndef OBOLO_TOOLKIT_TEXT_LAYOUT_H_
#define OBOLO_TOOLKIT_TEXT_LAYOUT_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/geometry.h"
#include "toolkit/ui_font.h"

namespace obolo {

// How a label or button title sets its text: what decides where its lines
// break and how tall it is.
struct TextStyle {
  UIFont font = UIFont::systemFont(17);                  // face and size
  NSTextAlignment alignment = NSTextAlignment::natural;  // within the width
  // At most this many lines; 0 for as many as the text needs.
  int numberOfLines = 1;
  // Word or character wrapping; the truncating and clipping modes wrap words
  // and end the last allowed line as they say.
  NSLineBreakMode lineBreakMode = NSLineBreakMode::byTruncatingTail;

  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

// One line as laid out, in points from the top left of the text's box.
struct TextLine {
  std::size_t start = 0;   // byte offset of the line's first character
  std::size_t length = 0;  // bytes on the line; for a truncated line, the rest of the text
  CGFloat x = 0;           // left end (alignment applied within the width asked for)
  CGFloat top = 0;       // top of the line
  CGFloat baseline = 0;  // from the top of the box
  CGFloat width = 0;   // of the text set on the line
  CGFloat height = 0;  // from its top to the next line's
  // The line ends in an ellipsis in place of the text that did not fit: the
  // text from `start` on, set in one line within the width asked for.
  bool truncated = false;
};

struct TextLayout {
  // The box the lines need, rounded up to whole points; (0, 0) for no text.
  CGSize size;
  std::vector<TextLine> lines;
};

// Measures and breaks text into lines; the layout pass asks it for labels'
// sizes and the renderer draws the same lines. One shared service, so a text
// measured is the text drawn.
class TextLayoutService {
 public:
  virtual ~TextLayoutService() = default;

  // Lays `text` out in `style`, wrapping within `width` points; a width of 0
  // or less means unbounded (a line per paragraph). Never fails: text that
  // cannot be set (see error()) lays out as no lines of size (0, 0).
  virtual TextLayout layout(std::string_view text, const TextStyle& style, CGFloat width) = 0;

  // Why text cannot be set (the font files are missing, say); empty when it
  // can. Asking may load the fonts.
  virtual std::string error() = 0;

  // The process's service: PangoTextLayout unless another was installed.
  // Callable from any thread; the service serialises its own use.
  static std::shared_ptr<TextLayoutService> shared();
  // Installs the service shared() returns; nullptr restores the default.
  static void setShared(std::shared_ptr<TextLayoutService> service);
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_TEXT_LAYOUT_H_
