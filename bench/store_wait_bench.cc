// Figure 6: how long a call on the kit's main thread waits on the preference
// store while another process holds its file (BEGIN EXCLUSIVE, so readers are
// kept out too), next to the same calls on a file nobody else holds. Each
// benchmark reports its longest single call as the counter longest_wait_us;
// the time per iteration is the mean.
//
// And what keeping the file self-contained costs: the store's write (rollback
// journal, full sync) next to a bare SQLite write in WAL mode, which leaves
// the value in the -wal side file, and a WAL write followed by a TRUNCATE
// checkpoint, the other way to leave the file alone holding it.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "platform/sqlite_preference_store.h"
#include "support/store_holder_process.h"

namespace obolo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using testing::StoreHolderProcess;

constexpr const char* kKeys[] = {"deviceKey", "accessToken", "refreshToken", "email", "customerId"};

// A store file of its own in a fresh directory, removed afterwards.
class ScratchFile {
 public:
  ScratchFile() {
    std::string pattern = (std::filesystem::temp_directory_path() / "obolo-bench-store-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) directory_ = pattern;
  }
  ~ScratchFile() {
    std::error_code ignored;
    if (!directory_.empty()) std::filesystem::remove_all(directory_, ignored);
  }
  bool ok() const { return !directory_.empty(); }
  std::string path() const { return directory_ + "/preferences.sqlite3"; }

 private:
  std::string directory_;
};

std::string Value(std::int64_t i) {
  return "eyJhbGciOiJIUzI1NiJ9.session-value-" + std::to_string(i) + ".c2ln";
}

// Runs `call` once per iteration and keeps the longest.
template <class Call>
void MeasureCalls(benchmark::State& state, Call call) {
  std::int64_t i = 0;
  double longest_us = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    call(i++);
    longest_us =
        std::max(longest_us, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  state.counters["longest_wait_us"] = longest_us;
}

void WaitUntilWritten(const SqlitePreferenceStore& store) {
  while (store.hasPendingWrites()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void BM_Store_Write(benchmark::State& state) {
  ScratchFile file;
  SqlitePreferenceStore store(file.path());
  if (!store.isPersistent()) return state.SkipWithError("the store file cannot be used");
  MeasureCalls(state, [&](std::int64_t i) { store.set("accessToken", Value(i)); });
}
BENCHMARK(BM_Store_Write)->Unit(benchmark::kMicrosecond)->Iterations(100);

void BM_Store_Read(benchmark::State& state) {
  ScratchFile file;
  SqlitePreferenceStore store(file.path());
  store.set("accessToken", Value(0));
  MeasureCalls(state, [&](std::int64_t) { benchmark::DoNotOptimize(store.object("accessToken")); });
}
BENCHMARK(BM_Store_Read)->Unit(benchmark::kMicrosecond)->Iterations(2000);

// `call` runs while another process holds the file exclusively; afterwards
// the file is let go and the store writes what it kept.
template <class Call>
void MeasureWhileHeld(benchmark::State& state, int iterations_written, Call call) {
  ScratchFile file;
  SqlitePreferenceStore store(file.path());
  store.set("accessToken", Value(-1));
  {
    StoreHolderProcess holder(OBOLO_BENCH_STORE_HOLDER_PROGRAM, file.path(),
                              StoreHolderProcess::Hold::kExclusive);
    if (!holder.held())
      return state.SkipWithError(("no other process holds the file: " + holder.error()).c_str());
    MeasureCalls(state, [&](std::int64_t i) { call(store, i); });
  }
  WaitUntilWritten(store);
  if (iterations_written > 0 &&
      store.object("accessToken") != PreferenceValue(Value(iterations_written - 1))) {
    state.SkipWithError("the last write did not reach the file");
  }
}

void BM_Store_WriteWhileHeld(benchmark::State& state) {
  MeasureWhileHeld(state, static_cast<int>(state.max_iterations),
                   [](SqlitePreferenceStore& store, std::int64_t i) { store.set("accessToken", Value(i)); });
}
BENCHMARK(BM_Store_WriteWhileHeld)->Unit(benchmark::kMicrosecond)->Iterations(2000);

void BM_Store_ReadWhileHeld(benchmark::State& state) {
  MeasureWhileHeld(state, 0, [](SqlitePreferenceStore& store, std::int64_t) {
    benchmark::DoNotOptimize(store.object("accessToken"));
  });
}
BENCHMARK(BM_Store_ReadWhileHeld)->Unit(benchmark::kMicrosecond)->Iterations(2000);

// A login's five writes and a logout's five removals, each a write group as
// the kit makes them; in the held case each iteration is on a file another
// process has just taken: the main thread's whole time for both.
void LoginAndLogout(SqlitePreferenceStore& store, std::int64_t i) {
  store.beginWriteGroup();
  for (const char* key : kKeys) store.set(key, Value(i));
  store.endWriteGroup();
  store.beginWriteGroup();
  for (const char* key : kKeys) store.removeObject(key);
  store.endWriteGroup();
}

void BM_Store_LoginLogoutWhileHeld(benchmark::State& state) {
  ScratchFile file;
  std::int64_t i = 0;
  double longest_us = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto store = std::make_unique<SqlitePreferenceStore>(file.path());
    auto holder = std::make_unique<StoreHolderProcess>(OBOLO_BENCH_STORE_HOLDER_PROGRAM, file.path(),
                                                       StoreHolderProcess::Hold::kExclusive);
    if (!holder->held()) {
      state.SkipWithError("no other process holds the file");
      break;
    }
    state.ResumeTiming();
    const auto start = Clock::now();
    LoginAndLogout(*store, i++);
    longest_us =
        std::max(longest_us, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    state.PauseTiming();
    holder.reset();
    WaitUntilWritten(*store);
    store.reset();
    state.ResumeTiming();
  }
  state.counters["longest_wait_us"] = longest_us;
}
BENCHMARK(BM_Store_LoginLogoutWhileHeld)->Unit(benchmark::kMicrosecond)->Iterations(20);

void BM_Store_LoginLogout(benchmark::State& state) {
  ScratchFile file;
  SqlitePreferenceStore store(file.path());
  MeasureCalls(state, [&](std::int64_t i) { LoginAndLogout(store, i); });
}
BENCHMARK(BM_Store_LoginLogout)->Unit(benchmark::kMicrosecond)->Iterations(20);

// A bare SQLite write of one key in WAL mode with a full sync, the way the
// store wrote before its file was made self-contained; with `checkpoint`,
// followed by a TRUNCATE checkpoint, so the file alone holds the value.
void BareWalWrite(benchmark::State& state, bool checkpoint) {
  ScratchFile file;
  sqlite3* db = nullptr;
  sqlite3_stmt* upsert = nullptr;
  if (sqlite3_open(file.path().c_str(), &db) != SQLITE_OK ||
      sqlite3_exec(db,
                   "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
                   "CREATE TABLE preferences (key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value)"
                   " WITHOUT ROWID",
                   nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db,
                         "INSERT INTO preferences (key, kind, value) VALUES (?1, 3, ?2) "
                         "ON CONFLICT(key) DO UPDATE SET kind = excluded.kind, value = excluded.value",
                         -1, &upsert, nullptr) != SQLITE_OK) {
    state.SkipWithError("the bare SQLite file cannot be used");
    sqlite3_close_v2(db);
    return;
  }
  MeasureCalls(state, [&](std::int64_t i) {
    const std::string value = Value(i);
    sqlite3_bind_text(upsert, 1, "accessToken", -1, SQLITE_STATIC);
    sqlite3_bind_text(upsert, 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    sqlite3_step(upsert);
    sqlite3_reset(upsert);
    if (checkpoint) sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  });
  sqlite3_finalize(upsert);
  sqlite3_close_v2(db);
}

void BM_Store_BareWalWrite(benchmark::State& state) { BareWalWrite(state, /*checkpoint=*/false); }
BENCHMARK(BM_Store_BareWalWrite)->Unit(benchmark::kMicrosecond)->Iterations(100);

void BM_Store_BareWalWriteCheckpointed(benchmark::State& state) { BareWalWrite(state, /*checkpoint=*/true); }
BENCHMARK(BM_Store_BareWalWriteCheckpointed)->Unit(benchmark::kMicrosecond)->Iterations(100);

}  // namespace
}  // namespace obolo::bench
