#include "support/store_files.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/sqlite_preference_store.h"

namespace obolo::testing {

std::string CopyFileAlone(const std::string& path) {
  static std::atomic<int> copies{0};
  const auto directory = std::filesystem::path(path).parent_path() / ("copy-" + std::to_string(++copies));
  std::filesystem::create_directories(directory);
  const auto copy = directory / std::filesystem::path(path).filename();
  std::filesystem::copy_file(path, copy);
  return copy.string();
}

StoredSession SessionInFile(const std::string& path) {
  return StoredSession::ReadFrom(std::make_shared<SqlitePreferenceStore>(path));
}

std::optional<PreferenceValue> ValueInFile(const std::string& path, std::string_view key) {
  return SqlitePreferenceStore(path).object(key);
}

void WaitUntil(const std::function<bool()>& done) {
  while (!done()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

std::vector<std::string> StoreLines(const LogCapture& log) {
  std::vector<std::string> lines;
  for (auto& line : log.lines()) {
    if (line.rfind("Preference store", 0) == 0) lines.push_back(std::move(line));
  }
  return lines;
}

StoredSession NumberedSession(int n) {
  const std::string suffix = std::to_string(n);
  return {"device-" + suffix, "access-" + suffix, "refresh-" + suffix, "reader" + suffix + "@example.com",
          1000 + n};
}

}  // namespace obolo::testing
