#include "entry/credential_mask.h"

#include <cstddef>
#include <functional>

namespace obolo {
namespace {

constexpr std::size_t kOpaqueRunLength = 16;
constexpr std::size_t kShortestCredential = 8;

bool IsAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsAlnum(char c) { return IsAlpha(c) || IsDigit(c); }
bool IsKeyChar(char c) { return IsAlnum(c) || c == '-' || c == '_'; }
bool IsTokenChar(char c) { return IsKeyChar(c) || c == '.'; }
bool IsLocalPartChar(char c) {
  return IsAlnum(c) || c == '.' || c == '_' || c == '%' || c == '+' || c == '-';
}
bool IsDomainChar(char c) { return IsAlnum(c) || c == '.' || c == '-'; }

void ReplaceAll(std::string& text, std::string_view secret) {
  if (secret.empty()) return;
  for (std::size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at)) {
    text.replace(at, secret.size(), kMaskedCredential);
    at += sizeof(kMaskedCredential) - 1;
  }
}

// Copies `text`, masking each maximal run of `inRun` characters (trailing
// dots left out: they end sentences) for which `masked` holds.
std::string MaskRuns(const std::string& text, bool (*inRun)(char),
                     const std::function<bool(std::string_view)>& masked) {
  std::string out;
  out.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    if (!inRun(text[at])) {
      out += text[at++];
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && inRun(text[end])) ++end;
    std::size_t runEnd = end;
    while (runEnd > at && text[runEnd - 1] == '.') --runEnd;
    const std::string_view run(text.data() + at, runEnd - at);
    if (!run.empty() && masked(run)) {
      out += kMaskedCredential;
    } else {
      out.append(run);
    }
    out.append(text, runEnd, end - runEnd);
    at = end;
  }
  return out;
}

std::string MaskEmailAddresses(const std::string& text) {
  std::string out;
  std::size_t copied = 0;
  for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1)) {
    std::size_t begin = at;
    while (begin > copied && IsLocalPartChar(text[begin - 1])) --begin;
    std::size_t end = at + 1;
    while (end < text.size() && IsDomainChar(text[end])) ++end;
    while (end > at + 1 && (text[end - 1] == '.' || text[end - 1] == '-')) --end;
    const std::string_view domain(text.data() + at + 1, end - at - 1);
    if (begin == at || domain.find('.') == std::string_view::npos || domain.front() == '.') continue;
    out.append(text, copied, begin - copied);
    out += kMaskedCredential;
    copied = end;
    at = end - 1;
  }
  out.append(text, copied, std::string::npos);
  return out;
}

}  // namespace

std::string MaskCredentials(std::string_view text, const std::vector<std::string>& known) {
  std::string masked(text);
  for (const std::string& secret : known) ReplaceAll(masked, secret);
  masked = MaskRuns(masked, IsTokenChar, [](std::string_view run) {
    for (std::size_t at = run.find("eyJ"); at != run.npos; at = run.find("eyJ", at + 1)) {
      if (at == 0 || !IsAlnum(run[at - 1])) return true;  // not the middle of a word
    }
    return false;
  });
  masked = MaskEmailAddresses(masked);
  masked = MaskRuns(masked, IsKeyChar, [](std::string_view run) {
    bool letter = false, digit = false;
    for (char c : run) {
      letter = letter || IsAlpha(c);
      digit = digit || IsDigit(c);
    }
    return run.size() >= kOpaqueRunLength && letter && digit;
  });
  return masked;
}

bool MayCarryCredential(std::string_view text) {
  std::size_t word = 0;
  for (char c : text) {
    if (c == '@') return true;
    const bool space = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    word = space ? 0 : word + 1;
    if (word >= kShortestCredential) return true;
  }
  return false;
}

}  // namespace obolo
