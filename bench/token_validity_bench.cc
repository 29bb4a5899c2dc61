// Figure 4: GlobalVariable::shared().isOBTokenValid() per call, with a real
// access token (issued by the sandbox, valid for an hour) in the SQLite
// session store. The paywall asks it once per article for a stored session.
//
// References: a bare SQLite point read of the same key in the same file (a
// connection of its own, a prepared statement, the text copied out), the
// floor for reading the token; and the kit's JWT payload decode alone, the
// other half of the work.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <string>

#include "bench/bench_environment.h"
#include "entry/global_variable.h"
#include "entry/jwt_decode.h"
#include "sandbox/default_world.h"

namespace obolo::bench {
namespace {

// Stores a reader's session for the benchmark and clears it afterwards, so
// the other benchmarks keep seeing a logged-out reader.
class StoredSession {
 public:
  StoredSession() {
    auto keys = BenchEnvironment::sandbox().createSession(sandbox::seed::kReaderEmail);
    if (!keys) return;
    token_ = keys->accessToken;
    GlobalVariable::shared().setAccessToken(token_);
  }
  ~StoredSession() { GlobalVariable::shared().logout(); }

  const std::string& token() const { return token_; }

 private:
  std::string token_;
};

void BM_TokenValid_Kit(benchmark::State& state) {
  StoredSession session;
  GlobalVariable& global = GlobalVariable::shared();
  if (session.token().empty() || !global.isOBTokenValid()) {
    state.SkipWithError("no valid token is stored");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(global.isOBTokenValid());
}
BENCHMARK(BM_TokenValid_Kit)->Unit(benchmark::kMicrosecond);

void BM_TokenValid_BareSqliteRead(benchmark::State& state) {
  StoredSession session;
  sqlite3* db = nullptr;
  sqlite3_stmt* select = nullptr;
  if (sqlite3_open_v2(BenchEnvironment::storePath().c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db, "SELECT kind, value FROM preferences WHERE key = ?1", -1, &select, nullptr) !=
          SQLITE_OK) {
    state.SkipWithError("the store cannot be read");
    sqlite3_close_v2(db);
    return;
  }
  constexpr char kKey[] = "accessToken";
  std::string token;
  for (auto _ : state) {
    sqlite3_bind_text(select, 1, kKey, sizeof kKey - 1, SQLITE_STATIC);
    if (sqlite3_step(select) == SQLITE_ROW) {
      const auto* bytes = static_cast<const char*>(sqlite3_column_blob(select, 1));
      token.assign(bytes, static_cast<size_t>(sqlite3_column_bytes(select, 1)));
    }
    sqlite3_reset(select);
    benchmark::DoNotOptimize(token.data());
  }
  if (token != session.token()) state.SkipWithError("the bare read did not find the token");
  sqlite3_finalize(select);
  sqlite3_close_v2(db);
}
BENCHMARK(BM_TokenValid_BareSqliteRead)->Unit(benchmark::kMicrosecond);

void BM_TokenValid_JwtDecodeOnly(benchmark::State& state) {
  StoredSession session;
  const std::string token = session.token();
  if (!JWTDecode::shared().decode(token).exp) {
    state.SkipWithError("the token has no expiry");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(JWTDecode::shared().decode(token));
}
BENCHMARK(BM_TokenValid_JwtDecodeOnly)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace obolo::bench
