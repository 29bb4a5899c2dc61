// Instants and the calendar arithmetic the token checks need.

#ifndef OBOLO_PLATFORM_DATE_H_
#define OBOLO_PLATFORM_DATE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace obolo {

// An instant, as seconds (with fraction) since 1970-01-01 00:00:00 UTC.
struct Date {
  double timeIntervalSince1970 = 0;

  // Now, by the shared Clock.
  static Date now();

  // The instant in UTC as "2023-11-14 22:13:20 +0000". Instants too far from
  // 1970 for a calendar date read "<seconds> seconds since 1970".
  std::string description() const;

  friend bool operator==(const Date&, const Date&) = default;
};

// The difference in whole minutes from `from` to `to`, truncated toward zero
// (negative when `to` lies before `from`): 59 seconds give 0, 60 give 1,
// -610 give -10. None when the count does not fit a 64-bit integer.
std::optional<std::int64_t> MinutesBetween(Date from, Date to);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_DATE_H_
