// The fonts the toolkit sets all text in, independent of the machine's fonts.
//
// Two files of Debian's fonts-dejavu-core, DejaVu Sans and DejaVu Sans Bold,
// are loaded into a fontconfig configuration of the toolkit's own (not the
// system's), so measuring and drawing find these and nothing else: the same
// text gives the same lines and pixels on every machine with the package. The
// directory is $OBOLO_FONT_DIR when set (read once, at first use), else the
// package's.
//
// Created on first use and kept for the process's life; callable from any
// thread. Text engines (pango_text_layout.cc, the renderer) hand config() to
// their font maps and use the same rendering options: antialiased, no hinting,
// unrounded glyph positions, so a line measures the same at any scale.

#ifndef OBOLO_TOOLKIT_KIT_FONTS_H_
#define OBOLO_TOOLKIT_KIT_FONTS_H_

#include <fontconfig/fontconfig.h>

#include <string>

namespace obolo {

inline constexpr char kKitFontFamily[] = "DejaVu Sans";

struct KitFonts {
  // The toolkit's own configuration; null when `error` is set.
  FcConfig* config = nullptr;
  // Which font file is missing or unreadable; empty when both loaded.
  std::string error;
  std::string directory;
};

// Loads the fonts on the first call. A missing file is reported once through
// the log seam, and `error` stays set for the process.
const KitFonts& KitFontConfiguration();

// Sets the options above on a fontconfig pattern (the substitution hook of an
// FcFontMap).
void ApplyKitFontOptions(FcPattern* pattern);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_KIT_FONTS_H_
