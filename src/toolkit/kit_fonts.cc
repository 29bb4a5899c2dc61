#include "toolkit/kit_fonts.h"

#include <filesystem>

#include "platform/environment.h"
#include "platform/log.h"

namespace obolo {
namespace {

constexpr char kDefaultFontDirectory[] = "/usr/share/fonts/truetype/dejavu";
constexpr const char* kFontFiles[] = {"DejaVuSans.ttf", "DejaVuSans-Bold.ttf"};

KitFonts Load() {
  KitFonts fonts;
  fonts.directory = EnvironmentOverride("OBOLO_FONT_DIR", kDefaultFontDirectory);
  FcConfig* config = FcConfigCreate();
  if (config == nullptr) {
    fonts.error = "fontconfig cannot create a configuration";
  }
  for (const char* name : kFontFiles) {
    if (!fonts.error.empty()) break;
    const std::string path = (std::filesystem::path(fonts.directory) / name).string();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored) ||
        !FcConfigAppFontAddFile(config, reinterpret_cast<const FcChar8*>(path.c_str()))) {
      fonts.error = "the font file " + path + " is missing or unreadable (Debian package fonts-dejavu-core)";
    }
  }
  if (!fonts.error.empty()) {
    if (config != nullptr) FcConfigDestroy(config);
    LogLine("Text cannot be set: " + fonts.error);
    return fonts;
  }
  // Fonts are never added or removed while the process runs.
  FcConfigSetRescanInterval(config, 0);
  fonts.config = config;
  return fonts;
}

}  // namespace

const KitFonts& KitFontConfiguration() {
  static const KitFonts* const fonts = new KitFonts(Load());  // kept for the process's life
  return *fonts;
}

void ApplyKitFontOptions(FcPattern* pattern) {
  FcPatternDel(pattern, FC_HINTING);
  FcPatternAddBool(pattern, FC_HINTING, FcFalse);
  FcPatternDel(pattern, FC_ANTIALIAS);
  FcPatternAddBool(pattern, FC_ANTIALIAS, FcTrue);
  FcPatternDel(pattern, FC_HINT_STYLE);
  FcPatternAddInteger(pattern, FC_HINT_STYLE, FC_HINT_NONE);
}

}  // namespace obolo
