#include "toolkit/attributed_string.h"

#include <algorithm>

namespace obolo {

void NSAttributedString::addAttribute(NSAttributedStringKey key, NSAttributeValue value, NSRange range) {
  range.location = std::min(range.location, length());
  range.length = std::min(range.length, length() - range.location);
  attributes_.push_back({key, std::move(value), range});
}

std::optional<NSAttributeValue> NSAttributedString::attribute(NSAttributedStringKey key,
                                                              std::size_t index) const {
  for (auto it = attributes_.rbegin(); it != attributes_.rend(); ++it) {
    if (it->key == key && index >= it->range.location && index < it->range.location + it->range.length) {
      return it->value;
    }
  }
  return std::nullopt;
}

std::optional<NSAttributeValue> NSAttributedString::attributeOverWholeText(NSAttributedStringKey key) const {
  for (auto it = attributes_.rbegin(); it != attributes_.rend(); ++it) {
    if (it->key == key && it->range == NSRange{0, length()}) return it->value;
  }
  return std::nullopt;
}

}  // namespace obolo
