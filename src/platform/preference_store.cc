#include "platform/preference_store.h"
#include "platform/no_destructor.h"

#include <cctype>
#include <cmath>
#include <limits>
#include <mutex>
#include <utility>

#include "platform/environment.h"
#include "platform/sqlite_preference_store.h"

namespace obolo {
namespace {

std::mutex& StandardMutex() {
  static NoDestructor<std::mutex> mutex;
  return *mutex;
}

std::shared_ptr<PreferenceStore>& Installed() {
  static NoDestructor<std::shared_ptr<PreferenceStore>> store;
  return *store;
}

std::int64_t Saturate(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 9223372036854775807.0) return std::numeric_limits<std::int64_t>::max();
  if (value <= -9223372036854775808.0) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// A text's integer reading: leading white space, an optional sign and the
// decimal digits that follow; anything after them is ignored, no digits give 0.
std::int64_t IntegerOfText(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  std::uint64_t magnitude = 0;
  const std::uint64_t limit = negative ? 9223372036854775808ULL : 9223372036854775807ULL;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - '0');
    magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
  }
  if (negative) {
    return magnitude == 9223372036854775808ULL ? std::numeric_limits<std::int64_t>::min()
                                               : -static_cast<std::int64_t>(magnitude);
  }
  return static_cast<std::int64_t>(magnitude);
}

// A text's boolean reading: after white space, a sign and leading zeros, true
// when it starts with Y, T or a digit 1-9 (either case).
bool BoolOfText(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  while (i < text.size() && text[i] == '0') ++i;
  if (i == text.size()) return false;
  const char c = text[i];
  return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

}  // namespace

std::string PreferenceStore::DefaultStorePath() {
  std::string path = EnvironmentOverride("OBOLO_PREFERENCES_PATH", "");
  if (!path.empty()) return path;
  std::string data_home = EnvironmentOverride("XDG_DATA_HOME", "");
  if (data_home.empty()) {
    const std::string home = EnvironmentOverride("HOME", "");
    if (home.empty()) return "";
    data_home = home + "/.local/share";
  }
  return data_home + "/obolo/preferences.sqlite3";
}

std::shared_ptr<PreferenceStore> PreferenceStore::standard() {
  std::lock_guard<std::mutex> lock(StandardMutex());
  auto& store = Installed();
  if (!store) store = std::make_shared<SqlitePreferenceStore>(DefaultStorePath());
  return store;
}

std::shared_ptr<PreferenceStore> PreferenceStore::setStandard(std::shared_ptr<PreferenceStore> store) {
  std::lock_guard<std::mutex> lock(StandardMutex());
  return std::exchange(Installed(), std::move(store));
}

std::int64_t IntegerReading(const PreferenceValue& value) {
  if (const auto* b = std::get_if<bool>(&value)) return *b ? 1 : 0;
  if (const auto* i = std::get_if<std::int64_t>(&value)) return *i;
  if (const auto* d = std::get_if<double>(&value)) return Saturate(*d);
  return IntegerOfText(std::get<std::string>(value));
}

bool BoolReading(const PreferenceValue& value) {
  if (const auto* b = std::get_if<bool>(&value)) return *b;
  if (const auto* i = std::get_if<std::int64_t>(&value)) return *i != 0;
  if (const auto* d = std::get_if<double>(&value)) return *d != 0.0;
  return BoolOfText(std::get<std::string>(value));
}

}  // namespace obolo
