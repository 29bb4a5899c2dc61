// The preference file is the host's and the disk's: another build, another
// program, a restore or a damaged disk may leave anything in it. Reading the
// session from it never crashes, each reading is stable, and a file the store
// cannot use is never written to.
//
// The input either is the file itself (byte 0 even) or describes one (byte 0
// odd): a table shape, then rows of every key, kind and value type SQLite can
// hold, huge texts, NULLs and blobs included.

#include <fuzzer/FuzzedDataProvider.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>

#include "entry/global_variable.h"
#include "platform/log.h"
#include "platform/sqlite_preference_store.h"

namespace {

std::string& Directory() {
  static std::string directory;
  return directory;
}

void RemoveDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(Directory(), ignored);
}

const std::string& StorePath() {
  static const std::string path = [] {
    // In memory when the machine offers it: the store syncs every write, and
    // syncing a disk would be most of each run.
    std::error_code error;
    const bool shm = std::filesystem::is_directory("/dev/shm", error);
    std::string directory =
        ((shm ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path()) /
         "obolo-fuzz-XXXXXX")
            .string();
    if (mkdtemp(directory.data()) == nullptr) std::abort();
    Directory() = directory;
    std::atexit(RemoveDirectory);
    return directory + "/preferences.sqlite3";
  }();
  return path;
}

std::string Contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void RemoveFile(const std::string& path) {
  std::error_code ignored;
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) std::filesystem::remove(path + suffix, ignored);
}

// The tables a file may carry under the store's name.
constexpr const char* kShapes[] = {
    "CREATE TABLE preferences (key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value) WITHOUT ROWID",
    "CREATE TABLE preferences (key, kind, value)",  // duplicate, NULL and blob keys
    "CREATE TABLE preferences (key TEXT PRIMARY KEY, kind TEXT, value BLOB)",
    "CREATE TABLE preferences (key, value)",  // no kinds
    "CREATE TABLE other (key, kind, value); CREATE VIEW preferences AS SELECT * FROM other",
};

constexpr const char* kKeys[] = {"deviceKey",  "accessToken", "refreshToken", "email",
                                 "customerId", "AccessToken", "hostSetting"};

void BindAny(FuzzedDataProvider& input, sqlite3_stmt* statement, int index) {
  switch (input.ConsumeIntegralInRange<int>(0, 6)) {
    case 0:
      sqlite3_bind_null(statement, index);
      break;
    case 1:
      sqlite3_bind_int64(statement, index, input.ConsumeIntegral<std::int64_t>());
      break;
    case 2:
      sqlite3_bind_double(statement, index, input.ConsumeFloatingPoint<double>());
      break;
    case 3: {
      const std::string text = input.ConsumeRandomLengthString(256);
      sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      break;
    }
    case 4: {
      const std::string bytes = input.ConsumeRandomLengthString(256);
      sqlite3_bind_blob(statement, index, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
      break;
    }
    case 5: {  // a huge text, up to 1 MiB
      const std::string text(input.ConsumeIntegralInRange<std::size_t>(0, 1u << 20),
                             input.ConsumeIntegral<char>());
      sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      break;
    }
    default: {  // a token-shaped text
      const std::string token = "e30." + input.ConsumeRandomLengthString(128) + ".sig";
      sqlite3_bind_text(statement, index, token.data(), static_cast<int>(token.size()), SQLITE_TRANSIENT);
      break;
    }
  }
}

void DescribedFile(FuzzedDataProvider& input, const std::string& path) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    sqlite3_close(db);
    return;
  }
  sqlite3_exec(db, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr);
  if (input.ConsumeBool()) sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  const std::size_t shape = input.ConsumeIntegralInRange<std::size_t>(0, std::size(kShapes) - 1);
  sqlite3_exec(db, kShapes[shape], nullptr, nullptr, nullptr);
  const bool has_kind = shape != 3;
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(db,
                     has_kind ? "INSERT OR REPLACE INTO preferences (key, kind, value) VALUES (?1, ?2, ?3)"
                              : "INSERT OR REPLACE INTO preferences (key, value) VALUES (?1, ?3)",
                     -1, &insert, nullptr);
  sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
  for (int rows = input.ConsumeIntegralInRange<int>(0, 12); insert != nullptr && rows > 0; --rows) {
    if (input.ConsumeBool()) {
      const char* key = kKeys[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kKeys) - 1)];
      if (input.ConsumeBool()) {
        sqlite3_bind_text(insert, 1, key, -1, SQLITE_STATIC);
      } else {
        sqlite3_bind_blob(insert, 1, key, static_cast<int>(std::char_traits<char>::length(key)),
                          SQLITE_STATIC);
      }
    } else {
      BindAny(input, insert, 1);
    }
    if (has_kind) {
      if (input.ConsumeBool()) {
        sqlite3_bind_int(insert, 2, input.ConsumeIntegralInRange<int>(0, 3));
      } else {
        BindAny(input, insert, 2);
      }
    }
    BindAny(input, insert, 3);
    sqlite3_step(insert);
    sqlite3_reset(insert);
    sqlite3_clear_bindings(insert);
  }
  sqlite3_finalize(insert);
  sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  // An earlier process may have ended without a checkpoint.
  sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, input.ConsumeBool() ? 1 : 0, nullptr);
  sqlite3_close(db);
}

// The session as the kit reads it; each reading is stable and of its kind.
void ReadSession() {
  obolo::GlobalVariable& global = obolo::GlobalVariable::shared();
  const std::string access = global.getAccessToken();
  if (global.isOBTokenExist() != !access.empty()) std::abort();
  if (global.getAccessToken() != access) std::abort();
  if (!access.empty()) (void)global.isOBTokenValid();
  (void)global.isRefreshTokenValid();
  (void)global.getDeviceKey();
  (void)global.getEmail();
  const std::int64_t id = global.getCustomerId();
  if (global.getCustomerId() != id) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  obolo::SetLogSink(obolo::NullLogSink());
  const std::string& path = StorePath();
  RemoveFile(path);
  FuzzedDataProvider input(data, size);
  const bool raw = input.ConsumeIntegral<std::uint8_t>() % 2 == 0;
  if (raw) {
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    std::ofstream(path, std::ios::binary) << bytes;
  } else {
    DescribedFile(input, path);
  }
  const std::string before = Contents(path);

  auto store = std::make_shared<obolo::SqlitePreferenceStore>(path);
  const bool usable = store->isPersistent();
  obolo::PreferenceStore::setStandard(store);
  ReadSession();
  obolo::PreferenceStore::setStandard(nullptr);
  store.reset();
  // A file the store could not use is left exactly as it was.
  if (raw && !usable && Contents(path) != before) std::abort();
  return 0;
}
