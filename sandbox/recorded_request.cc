#include "sandbox/recorded_request.h"

#include "sandbox/text_case.h"

namespace obolo::sandbox {

std::optional<std::string> RecordedRequest::header(std::string_view name) const {
  for (const auto& [field, value] : headers) {
    if (EqualsIgnoringCase(field, name)) return value;
  }
  return std::nullopt;
}

std::optional<std::string> RecordedRequest::headerExactly(std::string_view name) const {
  for (const auto& [field, value] : headers) {
    if (field == name) return value;
  }
  return std::nullopt;
}

}  // namespace obolo::sandbox
