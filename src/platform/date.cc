#include "platform/date.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "platform/clock.h"
#include "platform/number_format.h"

namespace obolo {
namespace {

// Calendar dates are written for years 1 to 9999 only.
constexpr double kFirstWritable = -62135596800.0;  // 0001-01-01T00:00:00Z
constexpr double kLastWritable = 253402300799.0;   // 9999-12-31T23:59:59Z

}  // namespace

Date Date::now() {
  const auto since_epoch = Clock::shared()->now().time_since_epoch();
  return Date{std::chrono::duration<double>(since_epoch).count()};
}

std::string Date::description() const {
  const double whole = std::floor(timeIntervalSince1970);
  if (!(whole >= kFirstWritable && whole <= kLastWritable)) {
    return ShortestDecimal(timeIntervalSince1970) + " seconds since 1970";
  }
  using namespace std::chrono;
  const sys_seconds instant{seconds{static_cast<std::int64_t>(whole)}};
  const sys_days day = floor<days>(instant);
  const year_month_day date{day};
  const hh_mm_ss<seconds> time{instant - day};
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02ld:%02ld:%02lld +0000", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<long>(time.hours().count()), static_cast<long>(time.minutes().count()),
                static_cast<long long>(time.seconds().count()));
  return text;
}

std::optional<std::int64_t> MinutesBetween(Date from, Date to) {
  const double minutes = std::trunc((to.timeIntervalSince1970 - from.timeIntervalSince1970) / 60.0);
  if (!(minutes > -9223372036854775808.0 && minutes < 9223372036854775808.0)) return std::nullopt;
  return static_cast<std::int64_t>(minutes);
}

}  // namespace obolo
