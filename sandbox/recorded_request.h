// One request as the sandbox received it, for tests that check what a client
// put on the wire.

#ifndef OBOLO_SANDBOX_RECORDED_REQUEST_H_
#define OBOLO_SANDBOX_RECORDED_REQUEST_H_

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace obolo::sandbox {

struct RecordedRequest {
  std::string method;
  // The path without the query, e.g. "/v2/obid/acceptBid".
  std::string path;
  // The raw query after '?', not decoded; empty when there is none.
  std::string query;
  // Header fields with their names exactly as the client wrote them (case
  // included). Values are as the HTTP parser delivers them: surrounding
  // whitespace is trimmed, so "Bearer " arrives as "Bearer". The order is by
  // name, not the order on the wire.
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  // The value of the first field whose name matches `name` without regard to
  // case; none when there is no such field.
  std::optional<std::string> header(std::string_view name) const;
  // The value of the field whose name is exactly `name`, case included.
  std::optional<std::string> headerExactly(std::string_view name) const;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_RECORDED_REQUEST_H_
