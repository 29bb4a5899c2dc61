#include "platform/sqlite_preference_store.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>

#include "platform/log.h"

namespace obolo {
namespace {

// How a value's kind is written next to it, so a boolean reads back as a
// boolean and not as the integer SQLite keeps it as.
enum Kind : int { kBool = 0, kInteger = 1, kReal = 2, kText = 3 };

constexpr const char* kSchema =
    "PRAGMA journal_mode=WAL;"
    "PRAGMA synchronous=FULL;"
    "CREATE TABLE IF NOT EXISTS preferences ("
    "  key TEXT PRIMARY KEY NOT NULL,"
    "  kind INTEGER NOT NULL,"
    "  value"
    ") WITHOUT ROWID;";

}  // namespace

SqlitePreferenceStore::SqlitePreferenceStore(const std::string& path) {
  const bool in_memory = path.empty() || path == ":memory:";
  if (!in_memory) {
    persistent_ = Open(path);
    if (persistent_) return;
    LogLine("Preference store " + path + " cannot be used; the session is kept in memory for this run");
  }
  Open(":memory:");
}

SqlitePreferenceStore::~SqlitePreferenceStore() { Close(); }

bool SqlitePreferenceStore::Open(const std::string& path) {
  Close();
  if (path != ":memory:") {
    std::error_code ignored;
    const auto directory = std::filesystem::path(path).parent_path();
    if (!directory.empty()) std::filesystem::create_directories(directory, ignored);
  }
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(path.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
    Close();
    return false;
  }
  sqlite3_busy_timeout(db_, 5000);
  const bool ready =
      sqlite3_exec(db_, kSchema, nullptr, nullptr, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db_, "SELECT kind, value FROM preferences WHERE key = ?1", -1, &select_,
                         nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db_,
                         "INSERT INTO preferences (key, kind, value) VALUES (?1, ?2, ?3) "
                         "ON CONFLICT(key) DO UPDATE SET kind = excluded.kind, value = excluded.value",
                         -1, &upsert_, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db_, "DELETE FROM preferences WHERE key = ?1", -1, &delete_, nullptr) ==
          SQLITE_OK;
  if (!ready) Close();
  return ready;
}

void SqlitePreferenceStore::Close() {
  sqlite3_finalize(select_);
  sqlite3_finalize(upsert_);
  sqlite3_finalize(delete_);
  select_ = upsert_ = delete_ = nullptr;
  if (db_ != nullptr) sqlite3_close_v2(db_);
  db_ = nullptr;
}

std::optional<PreferenceValue> SqlitePreferenceStore::object(std::string_view key) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (select_ == nullptr) return std::nullopt;
  sqlite3_reset(select_);
  sqlite3_bind_text(select_, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  std::optional<PreferenceValue> value;
  if (sqlite3_step(select_) == SQLITE_ROW) {
    const int kind = sqlite3_column_int(select_, 0);
    // A row whose kind does not match its stored type (a file edited by hand)
    // reads by the type SQLite holds.
    switch (sqlite3_column_type(select_, 1)) {
      case SQLITE_INTEGER: {
        const sqlite3_int64 number = sqlite3_column_int64(select_, 1);
        if (kind == kBool) {
          value = number != 0;
        } else {
          value = static_cast<std::int64_t>(number);
        }
        break;
      }
      case SQLITE_FLOAT:
        value = sqlite3_column_double(select_, 1);
        break;
      case SQLITE_TEXT:
      case SQLITE_BLOB: {
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(select_, 1));
        const int size = sqlite3_column_bytes(select_, 1);
        value = std::string(bytes == nullptr ? "" : std::string(bytes, static_cast<size_t>(size)));
        break;
      }
      default:
        break;  // NULL: treated as absent
    }
  }
  sqlite3_reset(select_);
  sqlite3_clear_bindings(select_);
  return value;
}

void SqlitePreferenceStore::set(std::string_view key, const PreferenceValue& value) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (upsert_ == nullptr) return;
  sqlite3_reset(upsert_);
  sqlite3_bind_text(upsert_, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  if (const auto* b = std::get_if<bool>(&value)) {
    sqlite3_bind_int(upsert_, 2, kBool);
    sqlite3_bind_int64(upsert_, 3, *b ? 1 : 0);
  } else if (const auto* i = std::get_if<std::int64_t>(&value)) {
    sqlite3_bind_int(upsert_, 2, kInteger);
    sqlite3_bind_int64(upsert_, 3, *i);
  } else if (const auto* d = std::get_if<double>(&value)) {
    sqlite3_bind_int(upsert_, 2, kReal);
    sqlite3_bind_double(upsert_, 3, *d);
  } else {
    const auto& text = std::get<std::string>(value);
    sqlite3_bind_int(upsert_, 2, kText);
    sqlite3_bind_text(upsert_, 3, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
  if (sqlite3_step(upsert_) != SQLITE_DONE) {
    LogLine("Preference store: writing " + std::string(key) + " failed: " + sqlite3_errmsg(db_));
  }
  sqlite3_reset(upsert_);
  sqlite3_clear_bindings(upsert_);
}

void SqlitePreferenceStore::removeObject(std::string_view key) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (delete_ == nullptr) return;
  sqlite3_reset(delete_);
  sqlite3_bind_text(delete_, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  if (sqlite3_step(delete_) != SQLITE_DONE) {
    LogLine("Preference store: removing " + std::string(key) + " failed: " + sqlite3_errmsg(db_));
  }
  sqlite3_reset(delete_);
  sqlite3_clear_bindings(delete_);
}

}  // namespace obolo
