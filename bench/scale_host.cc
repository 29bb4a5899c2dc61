// obolo-bench-scale-host N: a host app that loads N paywalls at once on one
// screen, as figure 10 (bench/scale_bench.cc) runs it against the bench's
// sandbox (the OBOLO_* variables it inherits point the kit there).
//
// It prints one line: the seconds from the first Obolo to every paywall's
// decision, the process's peak resident memory in KiB once every logo has
// landed too, and the most threads it ran at once. With N = 0 it prints the
// same for the program alone, the reference for memory.

#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/host_screen.h"
#include "entry/obolo.h"
#include "entry/position.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "platform/preference_store.h"
#include "platform/sqlite_preference_store.h"

namespace {

// A field of /proc/self/status ("VmHWM", "Threads"), as a number.
long StatusField(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(name + ":", 0) == 0) return std::strtol(line.c_str() + name.size() + 1, nullptr, 10);
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace obolo;
  using Clock = std::chrono::steady_clock;
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s PAYWALLS LOGO_URL\n", argv[0]);
    return 2;
  }
  const int count = std::atoi(argv[1]);
  const std::string logo = argv[2];
  MainLoop& loop = MainLoop::main();
  SetLogSink(NullLogSink());
  std::string directory = (std::filesystem::temp_directory_path() / "obolo-scale-XXXXXX").string();
  if (mkdtemp(directory.data()) == nullptr) return 1;
  PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(directory + "/preferences.sqlite3"));

  // Threads are sampled every 10 ms while the paywalls run.
  long threads = StatusField("Threads");
  auto sampled = Clock::now();
  auto sample_threads = [&] {
    threads = std::max(threads, StatusField("Threads"));
    sampled = Clock::now();
  };
  auto sample_now_and_then = [&] {
    if (Clock::now() - sampled > std::chrono::milliseconds(10)) sample_threads();
  };
  bench::HostScreen screen;
  std::vector<std::shared_ptr<PaywallVC>> paywalls;
  const auto start = Clock::now();
  for (int i = 0; i < count; ++i) {
    Obolo obolo(sandbox::seed::kPublisherAccessKey, sandbox::seed::kCategory, logo, sandbox::seed::kNormalArticleUrl,
                sandbox::seed::kPublisherCustomerId, sandbox::seed::kPublisherDomain);
    obolo.loadPaywall(screen.host, screen.content, Position::bottom);
    paywalls.push_back(std::dynamic_pointer_cast<PaywallVC>(screen.host->children().back()));
  }
  sample_threads();
  // A decided paywall shows its card (a logged-out reader, a paid article).
  size_t decided = 0;
  const bool all_decided = loop.runUntil(
      [&] {
        sample_now_and_then();
        while (decided < paywalls.size() && !paywalls[decided]->view()->isHidden()) ++decided;
        return decided == paywalls.size();
      },
      std::chrono::minutes(2));
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  sample_threads();
  size_t logos = 0;
  const bool all_logos = loop.runUntil(
      [&] {
        sample_now_and_then();
        while (logos < paywalls.size() && paywalls[logos]->imgPublisherLogo->image() != nullptr) ++logos;
        return logos == paywalls.size();
      },
      std::chrono::minutes(2));
  sample_threads();
  std::printf("%.6f %ld %ld\n", seconds, StatusField("VmHWM"), threads);

  paywalls.clear();
  PreferenceStore::setStandard(nullptr);
  std::filesystem::remove_all(directory);
  return all_decided && all_logos ? 0 : 1;
}
