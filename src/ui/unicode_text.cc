#include "ui/unicode_text.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace obolo {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

bool InRanges(char32_t c, std::initializer_list<Range> ranges) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [c](const Range& r) { return c >= r.first && c <= r.last; });
}

// --- Case mapping ---

struct Expansion {
  char32_t from;
  std::array<char32_t, 3> to;  // zero-terminated when shorter
};

// The unconditional multi-character upper-case mappings of SpecialCasing.
constexpr Expansion kUpperExpansions[] = {
    {0x00DF, {0x0053, 0x0053}},         {0x0149, {0x02BC, 0x004E}},
    {0x01F0, {0x004A, 0x030C}},         {0x0390, {0x0399, 0x0308, 0x0301}},
    {0x03B0, {0x03A5, 0x0308, 0x0301}}, {0x0587, {0x0535, 0x0552}},
    {0x1E96, {0x0048, 0x0331}},         {0x1E97, {0x0054, 0x0308}},
    {0x1E98, {0x0057, 0x030A}},         {0x1E99, {0x0059, 0x030A}},
    {0x1E9A, {0x0041, 0x02BE}},         {0x1F50, {0x03A5, 0x0313}},
    {0x1F52, {0x03A5, 0x0313, 0x0300}}, {0x1F54, {0x03A5, 0x0313, 0x0301}},
    {0x1F56, {0x03A5, 0x0313, 0x0342}}, {0x1FB2, {0x1FBA, 0x0399}},
    {0x1FB3, {0x0391, 0x0399}},         {0x1FB4, {0x0386, 0x0399}},
    {0x1FB6, {0x0391, 0x0342}},         {0x1FB7, {0x0391, 0x0342, 0x0399}},
    {0x1FBC, {0x0391, 0x0399}},         {0x1FC2, {0x1FCA, 0x0399}},
    {0x1FC3, {0x0397, 0x0399}},         {0x1FC4, {0x0389, 0x0399}},
    {0x1FC6, {0x0397, 0x0342}},         {0x1FC7, {0x0397, 0x0342, 0x0399}},
    {0x1FCC, {0x0397, 0x0399}},         {0x1FD2, {0x0399, 0x0308, 0x0300}},
    {0x1FD3, {0x0399, 0x0308, 0x0301}}, {0x1FD6, {0x0399, 0x0342}},
    {0x1FD7, {0x0399, 0x0308, 0x0342}}, {0x1FE2, {0x03A5, 0x0308, 0x0300}},
    {0x1FE3, {0x03A5, 0x0308, 0x0301}}, {0x1FE4, {0x03A1, 0x0313}},
    {0x1FE6, {0x03A5, 0x0342}},         {0x1FE7, {0x03A5, 0x0308, 0x0342}},
    {0x1FF2, {0x1FFA, 0x0399}},         {0x1FF3, {0x03A9, 0x0399}},
    {0x1FF4, {0x038F, 0x0399}},         {0x1FF6, {0x03A9, 0x0342}},
    {0x1FF7, {0x03A9, 0x0342, 0x0399}}, {0x1FFC, {0x03A9, 0x0399}},
    {0xFB00, {0x0046, 0x0046}},         {0xFB01, {0x0046, 0x0049}},
    {0xFB02, {0x0046, 0x004C}},         {0xFB03, {0x0046, 0x0046, 0x0049}},
    {0xFB04, {0x0046, 0x0046, 0x004C}}, {0xFB05, {0x0053, 0x0054}},
    {0xFB06, {0x0053, 0x0054}},         {0xFB13, {0x0544, 0x0546}},
    {0xFB14, {0x0544, 0x0535}},         {0xFB15, {0x0544, 0x053B}},
    {0xFB16, {0x054E, 0x0546}},         {0xFB17, {0x0544, 0x053D}},
};

// Greek with a subscript iota (U+1F80-U+1FAF): the capital without the
// iota-adscript form, then a capital iota.
bool GreekIotaSubscript(char32_t c, std::vector<char32_t>& out) {
  if (c < 0x1F80 || c > 0x1FAF) return false;
  static constexpr char32_t kBases[] = {0x1F08, 0x1F28, 0x1F68};
  out.push_back(kBases[(c - 0x1F80) / 16] + (c & 0x7));
  out.push_back(0x0399);
  return true;
}

char32_t SimpleUpper(char32_t c) {
  if (c >= 'a' && c <= 'z') return c - 0x20;
  if (c == 0x00B5) return 0x039C;                                    // micro sign
  if ((c >= 0x00E0 && c <= 0x00FE) && c != 0x00F7) return c - 0x20;  // Latin-1
  if (c == 0x00FF) return 0x0178;
  if (c == 0x0131) return 'I';  // dotless i
  if (c == 0x017F) return 'S';  // long s
  if (c == 0x03C2) return 0x03A3;
  if (c >= 0x03B1 && c <= 0x03CB) return c - 0x20;  // Greek
  if (c >= 0x0430 && c <= 0x044F) return c - 0x20;  // Cyrillic
  if (c >= 0x0450 && c <= 0x045F) return c - 0x50;
  return c;
}

// --- Grapheme cluster properties ---

enum class Break {
  other,
  cr,
  lf,
  control,
  extend,
  zwj,
  spacingMark,
  prepend,
  regionalIndicator,
  l,
  v,
  t,
  lv,
  lvt
};

bool IsExtend(char32_t c) {
  return InRanges(
      c, {{0x0300, 0x036F},   {0x0483, 0x0489},   {0x0591, 0x05BD},   {0x05BF, 0x05BF},   {0x05C1, 0x05C2},
          {0x05C4, 0x05C5},   {0x05C7, 0x05C7},   {0x0610, 0x061A},   {0x064B, 0x065F},   {0x0670, 0x0670},
          {0x06D6, 0x06DC},   {0x06DF, 0x06E4},   {0x06E7, 0x06E8},   {0x06EA, 0x06ED},   {0x0711, 0x0711},
          {0x0730, 0x074A},   {0x07A6, 0x07B0},   {0x07EB, 0x07F3},   {0x0816, 0x082D},   {0x0859, 0x085B},
          {0x08D3, 0x08E1},   {0x08E3, 0x0902},   {0x093A, 0x093A},   {0x093C, 0x093C},   {0x0941, 0x0948},
          {0x094D, 0x094D},   {0x0951, 0x0957},   {0x0962, 0x0963},   {0x0981, 0x0981},   {0x09BC, 0x09BC},
          {0x09BE, 0x09BE},   {0x09C1, 0x09C4},   {0x09CD, 0x09CD},   {0x09D7, 0x09D7},   {0x09E2, 0x09E3},
          {0x0A01, 0x0A02},   {0x0A3C, 0x0A3C},   {0x0A41, 0x0A51},   {0x0A70, 0x0A71},   {0x0A75, 0x0A75},
          {0x0A81, 0x0A82},   {0x0ABC, 0x0ABC},   {0x0AC1, 0x0AC8},   {0x0ACD, 0x0ACD},   {0x0AE2, 0x0AE3},
          {0x0B01, 0x0B01},   {0x0B3C, 0x0B3C},   {0x0B3E, 0x0B3F},   {0x0B41, 0x0B44},   {0x0B4D, 0x0B4D},
          {0x0B82, 0x0B82},   {0x0BBE, 0x0BBE},   {0x0BC0, 0x0BC0},   {0x0BCD, 0x0BCD},   {0x0C00, 0x0C00},
          {0x0C3E, 0x0C40},   {0x0C46, 0x0C56},   {0x0CBC, 0x0CBC},   {0x0CCC, 0x0CCD},   {0x0D41, 0x0D44},
          {0x0D4D, 0x0D4D},   {0x0DCA, 0x0DCA},   {0x0DD2, 0x0DD6},   {0x0E31, 0x0E31},   {0x0E34, 0x0E3A},
          {0x0E47, 0x0E4E},   {0x0EB1, 0x0EB1},   {0x0EB4, 0x0EBC},   {0x0EC8, 0x0ECD},   {0x0F18, 0x0F19},
          {0x0F35, 0x0F35},   {0x0F37, 0x0F37},   {0x0F39, 0x0F39},   {0x0F71, 0x0F7E},   {0x0F80, 0x0F84},
          {0x0F86, 0x0F87},   {0x0F8D, 0x0FBC},   {0x102D, 0x1030},   {0x1032, 0x1037},   {0x1039, 0x103A},
          {0x17B4, 0x17B5},   {0x17B7, 0x17BD},   {0x17C6, 0x17C6},   {0x17C9, 0x17D3},   {0x180B, 0x180D},
          {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},   {0x200C, 0x200C},   {0x20D0, 0x20F0},   {0x2CEF, 0x2CF1},
          {0x2DE0, 0x2DFF},   {0x302A, 0x302F},   {0x3099, 0x309A},   {0xA66F, 0xA672},   {0xA674, 0xA67D},
          {0xA69E, 0xA69F},   {0xA6F0, 0xA6F1},   {0xFB1E, 0xFB1E},   {0xFE00, 0xFE0F},   {0xFE20, 0xFE2F},
          {0xFF9E, 0xFF9F},   {0x1D165, 0x1D169}, {0x1D16D, 0x1D172}, {0x1D17B, 0x1D182}, {0x1F3FB, 0x1F3FF},
          {0xE0020, 0xE007F}, {0xE0100, 0xE01EF}});
}

bool IsSpacingMark(char32_t c) {
  return InRanges(c,
                  {{0x0903, 0x0903}, {0x093B, 0x093B}, {0x093E, 0x0940}, {0x0949, 0x094C}, {0x094E, 0x094F},
                   {0x0982, 0x0983}, {0x09BF, 0x09C0}, {0x09C7, 0x09C8}, {0x09CB, 0x09CC}, {0x0A03, 0x0A03},
                   {0x0A3E, 0x0A40}, {0x0A83, 0x0A83}, {0x0ABE, 0x0AC0}, {0x0AC9, 0x0AC9}, {0x0ACB, 0x0ACC},
                   {0x0B02, 0x0B03}, {0x0B40, 0x0B40}, {0x0B47, 0x0B4C}, {0x0BBF, 0x0BBF}, {0x0BC1, 0x0BCC},
                   {0x0C01, 0x0C03}, {0x0C41, 0x0C44}, {0x0C82, 0x0C83}, {0x0CBE, 0x0CBE}, {0x0CC0, 0x0CCB},
                   {0x0D02, 0x0D03}, {0x0D3F, 0x0D40}, {0x0D46, 0x0D4C}, {0x0D82, 0x0D83}, {0x0DD0, 0x0DD1},
                   {0x0DD8, 0x0DDE}, {0x0DF2, 0x0DF3}, {0x0E33, 0x0E33}, {0x0EB3, 0x0EB3}, {0x0F3E, 0x0F3F},
                   {0x0F7F, 0x0F7F}, {0x1031, 0x1031}, {0x103B, 0x103C}, {0x17B6, 0x17B6}, {0x17BE, 0x17C5},
                   {0x17C7, 0x17C8}});
}

bool IsControl(char32_t c) {
  return InRanges(c, {{0x0000, 0x001F},
                      {0x007F, 0x009F},
                      {0x00AD, 0x00AD},
                      {0x061C, 0x061C},
                      {0x180E, 0x180E},
                      {0x200B, 0x200B},
                      {0x200E, 0x200F},
                      {0x2028, 0x202E},
                      {0x2060, 0x206F},
                      {0xFEFF, 0xFEFF},
                      {0xFFF0, 0xFFFB},
                      {0xE0000, 0xE001F},
                      {0xE0080, 0xE00FF}});
}

bool IsPrepend(char32_t c) {
  return InRanges(c,
                  {{0x0600, 0x0605}, {0x06DD, 0x06DD}, {0x070F, 0x070F}, {0x08E2, 0x08E2}, {0x0D4E, 0x0D4E}});
}

bool IsExtendedPictographic(char32_t c) {
  return InRanges(
      c, {{0x00A9, 0x00A9},   {0x00AE, 0x00AE},   {0x203C, 0x203C},   {0x2049, 0x2049},   {0x2122, 0x2122},
          {0x2139, 0x2139},   {0x2194, 0x21AA},   {0x231A, 0x23FF},   {0x24C2, 0x24C2},   {0x25AA, 0x25FE},
          {0x2600, 0x27BF},   {0x2934, 0x2935},   {0x2B05, 0x2B55},   {0x3030, 0x3030},   {0x303D, 0x303D},
          {0x3297, 0x3297},   {0x3299, 0x3299},   {0x1F000, 0x1F0FF}, {0x1F10D, 0x1F1AD}, {0x1F201, 0x1F3FA},
          {0x1F400, 0x1F64F}, {0x1F680, 0x1FAFF}, {0x1FC00, 0x1FFFD}});
}

Break BreakProperty(char32_t c) {
  if (c == '\r') return Break::cr;
  if (c == '\n') return Break::lf;
  if (c == 0x200D) return Break::zwj;
  if (IsExtend(c)) return Break::extend;
  if (IsControl(c)) return Break::control;
  if (c >= 0x1F1E6 && c <= 0x1F1FF) return Break::regionalIndicator;
  if (IsSpacingMark(c)) return Break::spacingMark;
  if (IsPrepend(c)) return Break::prepend;
  if ((c >= 0x1100 && c <= 0x115F) || (c >= 0xA960 && c <= 0xA97C)) return Break::l;
  if ((c >= 0x1160 && c <= 0x11A7) || (c >= 0xD7B0 && c <= 0xD7C6)) return Break::v;
  if ((c >= 0x11A8 && c <= 0x11FF) || (c >= 0xD7CB && c <= 0xD7FB)) return Break::t;
  if (c >= 0xAC00 && c <= 0xD7A3) return (c - 0xAC00) % 28 == 0 ? Break::lv : Break::lvt;
  return Break::other;
}

}  // namespace

std::vector<char32_t> DecodeUtf8(std::string_view text) {
  std::vector<char32_t> out;
  out.reserve(text.size());
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n;) {
    const unsigned char lead = p[i];
    int extra = 0;
    char32_t c = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
      out.push_back(lead);
      ++i;
      continue;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      extra = 1, c = lead & 0x1F, minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      extra = 2, c = lead & 0x0F, minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      extra = 3, c = lead & 0x07, minimum = 0x10000;
    } else {
      out.push_back(0xFFFD);
      ++i;
      continue;
    }
    std::size_t j = i + 1;
    bool ok = true;
    for (int k = 0; k < extra; ++k, ++j) {
      if (j >= n || (p[j] & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      c = (c << 6) | (p[j] & 0x3F);
    }
    if (!ok || c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out.push_back(0xFFFD);
      i = ok ? j : std::max(j, i + 1);
      continue;
    }
    out.push_back(c);
    i = j;
  }
  return out;
}

std::string EncodeUtf8(const std::vector<char32_t>& code_points) {
  std::string out;
  for (char32_t c : code_points) {
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

bool IsWhitespaceOrNewline(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

std::vector<char32_t> TrimWhitespaceAndNewlines(const std::vector<char32_t>& text) {
  auto first = std::find_if_not(text.begin(), text.end(), IsWhitespaceOrNewline);
  auto last =
      std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), IsWhitespaceOrNewline).base();
  return std::vector<char32_t>(first, last);
}

std::vector<char32_t> UppercaseFull(const std::vector<char32_t>& text) {
  std::vector<char32_t> out;
  out.reserve(text.size());
  for (char32_t c : text) {
    auto expansion = std::find_if(std::begin(kUpperExpansions), std::end(kUpperExpansions),
                                  [c](const Expansion& e) { return e.from == c; });
    if (expansion != std::end(kUpperExpansions)) {
      for (char32_t to : expansion->to) {
        if (to != 0) out.push_back(to);
      }
      continue;
    }
    if (GreekIotaSubscript(c, out)) continue;
    out.push_back(SimpleUpper(c));
  }
  return out;
}

std::string LowercaseForAsciiComparison(std::string_view text) {
  static constexpr std::string_view kKelvinSign = "\xE2\x84\xAA";  // U+212A
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i, kKelvinSign.size()) == kKelvinSign) {
      out.push_back('k');
      i += kKelvinSign.size() - 1;
      continue;
    }
    const char c = text[i];
    out.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c);
  }
  return out;
}

std::size_t CountGraphemes(const std::vector<char32_t>& text) {
  std::size_t count = 0;
  Break previous = Break::control;
  bool pictographic_run = false;  // ExtPict Extend* so far in this cluster
  bool after_pictographic_zwj = false;
  std::size_t regional_run = 0;

  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t c = text[i];
    const Break current = BreakProperty(c);
    bool boundary = true;
    if (i == 0) {
      boundary = true;
    } else if (previous == Break::cr && current == Break::lf) {
      boundary = false;  // GB3
    } else if (previous == Break::cr || previous == Break::lf || previous == Break::control) {
      boundary = true;  // GB4
    } else if (current == Break::cr || current == Break::lf || current == Break::control) {
      boundary = true;  // GB5
    } else if (previous == Break::l && (current == Break::l || current == Break::v || current == Break::lv ||
                                        current == Break::lvt)) {
      boundary = false;  // GB6
    } else if ((previous == Break::lv || previous == Break::v) &&
               (current == Break::v || current == Break::t)) {
      boundary = false;  // GB7
    } else if ((previous == Break::lvt || previous == Break::t) && current == Break::t) {
      boundary = false;  // GB8
    } else if (current == Break::extend || current == Break::zwj || current == Break::spacingMark) {
      boundary = false;  // GB9, GB9a
    } else if (previous == Break::prepend) {
      boundary = false;  // GB9b
    } else if (after_pictographic_zwj && IsExtendedPictographic(c)) {
      boundary = false;  // GB11
    } else if (previous == Break::regionalIndicator && current == Break::regionalIndicator &&
               regional_run % 2 == 1) {
      boundary = false;  // GB12, GB13
    }
    if (boundary) ++count;

    // State for GB11 and GB12/13.
    after_pictographic_zwj = pictographic_run && current == Break::zwj;
    if (IsExtendedPictographic(c) && current != Break::extend) {
      pictographic_run = true;
    } else if (current != Break::extend) {
      pictographic_run = false;
    }
    regional_run = current == Break::regionalIndicator ? regional_run + 1 : 0;
    previous = current;
  }
  return count;
}

}  // namespace obolo
