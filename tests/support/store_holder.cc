// obolo_store_holder PATH exclusive|immediate
//
// Another process using the same preference file: takes the lock on the
// SQLite file at PATH (waiting for it as long as a minute), prints "held", and
// keeps it while it obeys one command a line on standard input:
//   set KEY TEXT   writes KEY as a text inside the held transaction; prints "done"
//   commit         commits and exits
//   rollback       (or the end of the input) rolls back and exits
// "exclusive" keeps every other connection out, readers included;
// "immediate" keeps other writers out and lets readers in.

#include <sqlite3.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

int Fail(sqlite3* db, const char* what) {
  std::printf("failed: %s: %s\n", what, sqlite3_errmsg(db));
  std::fflush(stdout);
  sqlite3_close_v2(db);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string mode = argv[2];
  if (mode != "exclusive" && mode != "immediate") return 2;
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(argv[1], &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK) {
    return Fail(db, "open");
  }
  sqlite3_busy_timeout(db, 60'000);
  const std::string begin = mode == "exclusive" ? "BEGIN EXCLUSIVE" : "BEGIN IMMEDIATE";
  if (sqlite3_exec(db, begin.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) return Fail(db, "lock");
  std::printf("held\n");
  std::fflush(stdout);

  std::string line;
  while (std::getline(std::cin, line)) {
    if (line == "commit") {
      if (sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) return Fail(db, "commit");
      sqlite3_close_v2(db);
      return 0;
    }
    if (line == "rollback") break;
    if (line.rfind("set ", 0) == 0) {
      const size_t space = line.find(' ', 4);
      const std::string key = line.substr(4, space == std::string::npos ? std::string::npos : space - 4);
      const std::string text = space == std::string::npos ? "" : line.substr(space + 1);
      sqlite3_stmt* insert = nullptr;
      if (sqlite3_exec(db,
                       "CREATE TABLE IF NOT EXISTS preferences (key TEXT PRIMARY KEY NOT NULL, "
                       "kind INTEGER NOT NULL, value) WITHOUT ROWID",
                       nullptr, nullptr, nullptr) != SQLITE_OK ||
          sqlite3_prepare_v2(db, "INSERT OR REPLACE INTO preferences (key, kind, value) VALUES (?1, 3, ?2)",
                             -1, &insert, nullptr) != SQLITE_OK) {
        return Fail(db, "set");
      }
      sqlite3_bind_text(insert, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 2, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      const int rc = sqlite3_step(insert);
      sqlite3_finalize(insert);
      if (rc != SQLITE_DONE) return Fail(db, "set");
      std::printf("done\n");
      std::fflush(stdout);
    }
  }
  sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close_v2(db);
  return 0;
}
