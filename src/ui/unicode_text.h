// The bits of Unicode text handling that the colour parser and the label hint
// need: code points, the white-space-and-newlines set, case mapping and
// user-perceived characters. Pure functions, callable from any thread.
//
// Text is UTF-8; an ill-formed sequence reads as U+FFFD, as the platform
// repairs it when it makes a string.

#ifndef OBOLO_UI_UNICODE_TEXT_H_
#define OBOLO_UI_UNICODE_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace obolo {

std::vector<char32_t> DecodeUtf8(std::string_view text);
std::string EncodeUtf8(const std::vector<char32_t>& code_points);

// The platform's whitespace-and-newlines set: the space separators (Zs), the
// line and paragraph separators, tab, and U+000A-U+000D and U+0085.
bool IsWhitespaceOrNewline(char32_t c);

// Both ends of `text` without characters of that set.
std::vector<char32_t> TrimWhitespaceAndNewlines(const std::vector<char32_t>& text);

// Full upper-casing as the platform does it for the characters where it can
// matter to a parser of ASCII: every letter that maps to one or more ASCII
// letters (a-z, the long s, the dotless i, the f-ligatures, ...) and every
// letter whose upper case is longer than itself (the sharp s becomes "SS").
// Latin-1, Greek and Cyrillic letters map too; letters of other scripts keep
// their case here.
std::vector<char32_t> UppercaseFull(const std::vector<char32_t>& text);

// Lower-cases ASCII letters and the Kelvin sign (which lower-cases to ASCII
// "k"); every other character is kept. Enough to compare a text, ignoring case,
// with an ASCII sentence.
std::string LowercaseForAsciiComparison(std::string_view text);

// The number of user-perceived characters (extended grapheme clusters): a
// letter with its combining marks, CR LF, a Hangul syllable made of jamo, a
// flag (a pair of regional indicators) and an emoji ZWJ sequence each count as
// one. The segmentation follows the Unicode rules with property ranges for the
// common scripts; rare marks outside them count as characters of their own.
std::size_t CountGraphemes(const std::vector<char32_t>& text);

}  // namespace obolo

#endif  // OBOLO_UI_UNICODE_TEXT_H_
