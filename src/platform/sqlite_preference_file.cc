#include "platform/sqlite_preference_file.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>
#include <thread>

namespace obolo {
namespace {

// How a value's kind is written next to it, so a boolean reads back as a
// boolean and not as the integer SQLite keeps it as.
enum Kind : int { kBool = 0, kInteger = 1, kReal = 2, kText = 3 };

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS preferences ("
    "  key TEXT PRIMARY KEY NOT NULL,"
    "  kind INTEGER NOT NULL,"
    "  value"
    ") WITHOUT ROWID";

// How long the busy handler sleeps between two tries of a held lock.
constexpr std::chrono::microseconds kBusyPoll{250};

std::optional<PreferenceValue> ValueOfRow(sqlite3_stmt* row) {
  const int kind = sqlite3_column_int(row, 0);
  // A row whose kind does not match its stored type (a file edited by hand)
  // reads by the type SQLite holds.
  switch (sqlite3_column_type(row, 1)) {
    case SQLITE_INTEGER: {
      const sqlite3_int64 number = sqlite3_column_int64(row, 1);
      if (kind == kBool) return PreferenceValue(number != 0);
      return PreferenceValue(static_cast<std::int64_t>(number));
    }
    case SQLITE_FLOAT:
      return PreferenceValue(sqlite3_column_double(row, 1));
    case SQLITE_TEXT:
    case SQLITE_BLOB: {
      const auto* bytes = static_cast<const char*>(sqlite3_column_blob(row, 1));
      const int size = sqlite3_column_bytes(row, 1);
      return PreferenceValue(bytes == nullptr ? std::string()
                                              : std::string(bytes, static_cast<size_t>(size)));
    }
    default:
      return std::nullopt;  // NULL: treated as absent
  }
}

}  // namespace

SqlitePreferenceFile::SqlitePreferenceFile(std::string path, std::string vfs)
    : path_(std::move(path)), vfs_(std::move(vfs)) {}

SqlitePreferenceFile::~SqlitePreferenceFile() { close(); }

int SqlitePreferenceFile::open(std::chrono::milliseconds budget) {
  close();
  std::error_code ignored;
  const auto directory = std::filesystem::path(path_).parent_path();
  if (!directory.empty()) std::filesystem::create_directories(directory, ignored);

  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  int rc = sqlite3_open_v2(path_.c_str(), &db_, flags, vfs_.empty() ? nullptr : vfs_.c_str());
  if (rc == SQLITE_OK) {
    sqlite3_extended_result_codes(db_, 1);
    sqlite3_busy_handler(db_, &SqlitePreferenceFile::BusyHandler, this);
    deadline_ = std::chrono::steady_clock::now() + budget;
    rc = sqlite3_exec(db_, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
  }
  if (rc == SQLITE_OK) rc = sqlite3_exec(db_, kSchema, nullptr, nullptr, nullptr);
  if (rc == SQLITE_OK) rc = Prepare();
  // Only a file known to be the store's own is switched. It leaves WAL mode
  // only when no other connection has it open; until then it is used as it
  // is and switched after each write.
  if (rc == SQLITE_OK) rc = LeaveWal();
  if (rc != SQLITE_OK) close();
  return rc;
}

int SqlitePreferenceFile::Prepare() {
  const struct {
    const char* sql;
    sqlite3_stmt** statement;
  } statements[] = {
      {"SELECT kind, value FROM preferences WHERE key = ?1", &select_},
      {"INSERT INTO preferences (key, kind, value) VALUES (?1, ?2, ?3) "
       "ON CONFLICT(key) DO UPDATE SET kind = excluded.kind, value = excluded.value",
       &upsert_},
      {"DELETE FROM preferences WHERE key = ?1", &delete_},
      // IMMEDIATE: the write lock is taken (or refused) before anything is
      // written, so a refusal never leaves half a batch to roll back.
      {"BEGIN IMMEDIATE", &begin_},
      {"COMMIT", &commit_},
  };
  for (const auto& s : statements) {
    const int rc = sqlite3_prepare_v3(db_, s.sql, -1, SQLITE_PREPARE_PERSISTENT, s.statement, nullptr);
    if (rc != SQLITE_OK) return rc;
  }
  return SQLITE_OK;
}

void SqlitePreferenceFile::close() {
  for (sqlite3_stmt** statement : {&select_, &upsert_, &delete_, &begin_, &commit_}) {
    sqlite3_finalize(*statement);
    *statement = nullptr;
  }
  if (db_ != nullptr) sqlite3_close_v2(db_);
  db_ = nullptr;
  wal_ = false;
}

int SqlitePreferenceFile::Step(sqlite3_stmt* statement) {
  int rc = sqlite3_step(statement);
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
  if (rc == SQLITE_DONE || rc == SQLITE_ROW) rc = SQLITE_OK;
  return rc;
}

int SqlitePreferenceFile::read(std::string_view key, std::optional<PreferenceValue>& value,
                               std::chrono::milliseconds budget) {
  deadline_ = std::chrono::steady_clock::now() + budget;
  sqlite3_bind_text(select_, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  int rc = sqlite3_step(select_);
  if (rc == SQLITE_ROW) {
    value = ValueOfRow(select_);
    rc = SQLITE_OK;
  } else if (rc == SQLITE_DONE) {
    value.reset();
    rc = SQLITE_OK;
  }
  sqlite3_reset(select_);
  sqlite3_clear_bindings(select_);
  return rc;
}

int SqlitePreferenceFile::BindValue(const PreferenceValue& value) {
  if (const auto* b = std::get_if<bool>(&value)) {
    sqlite3_bind_int(upsert_, 2, kBool);
    return sqlite3_bind_int64(upsert_, 3, *b ? 1 : 0);
  }
  if (const auto* i = std::get_if<std::int64_t>(&value)) {
    sqlite3_bind_int(upsert_, 2, kInteger);
    return sqlite3_bind_int64(upsert_, 3, *i);
  }
  if (const auto* d = std::get_if<double>(&value)) {
    sqlite3_bind_int(upsert_, 2, kReal);
    return sqlite3_bind_double(upsert_, 3, *d);
  }
  const auto& text = std::get<std::string>(value);
  sqlite3_bind_int(upsert_, 2, kText);
  return sqlite3_bind_text64(upsert_, 3, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int SqlitePreferenceFile::write(const std::vector<Write>& writes, std::chrono::milliseconds budget) {
  deadline_ = std::chrono::steady_clock::now() + budget;
  int rc = Step(begin_);
  for (auto it = writes.begin(); rc == SQLITE_OK && it != writes.end(); ++it) {
    const auto& [key, value] = *it;
    sqlite3_stmt* statement = value->has_value() ? upsert_ : delete_;
    rc = sqlite3_bind_text(statement, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
    if (rc == SQLITE_OK && value->has_value()) rc = BindValue(**value);
    if (rc == SQLITE_OK) {
      rc = Step(statement);
    } else {
      sqlite3_clear_bindings(statement);
    }
  }
  if (rc == SQLITE_OK) rc = Step(commit_);
  // SQLite may already have rolled back (a full disk, an I/O error); a
  // transaction still open (a commit that could not get the lock) is ended
  // here, so the next write starts clean.
  if (rc != SQLITE_OK && sqlite3_get_autocommit(db_) == 0) {
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  if (rc == SQLITE_OK && wal_) SwitchToRollbackJournal();
  return rc;
}

int SqlitePreferenceFile::QueryText(const char* sql, std::string& text) {
  sqlite3_stmt* statement = nullptr;
  int rc = sqlite3_prepare_v2(db_, sql, -1, &statement, nullptr);
  if (rc == SQLITE_OK) {
    rc = sqlite3_step(statement);
    if (rc == SQLITE_ROW) {
      const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      text = bytes == nullptr ? "" : bytes;
      rc = SQLITE_OK;
    }
  }
  sqlite3_finalize(statement);
  return rc;
}

int SqlitePreferenceFile::LeaveWal() {
  std::string mode;
  int rc = QueryText("PRAGMA journal_mode=DELETE", mode);
  // Another connection keeps the file in WAL mode: use it so for now.
  if (IsContention(rc) && QueryText("PRAGMA journal_mode", mode) == SQLITE_OK && mode == "wal")
    rc = SQLITE_OK;
  if (rc == SQLITE_OK) wal_ = mode == "wal";
  return rc;
}

void SqlitePreferenceFile::SwitchToRollbackJournal() {
  // Without waiting: while another connection still uses the WAL, the
  // checkpoint copies what it can into the file, and the switch is tried
  // again after the next write.
  deadline_ = std::chrono::steady_clock::now();
  LeaveWal();
  if (wal_) sqlite3_wal_checkpoint_v2(db_, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

int SqlitePreferenceFile::BusyHandler(void* file, int /*attempts*/) {
  const auto& self = *static_cast<SqlitePreferenceFile*>(file);
  const auto now = std::chrono::steady_clock::now();
  if (now >= self.deadline_) return 0;
  std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kBusyPoll, self.deadline_ - now));
  return 1;
}

std::string SqlitePreferenceFile::Describe(int code) { return sqlite3_errstr(code); }

bool SqlitePreferenceFile::IsContention(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

}  // namespace obolo
