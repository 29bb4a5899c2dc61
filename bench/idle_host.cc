// obolo-bench-idle: the memory reference for the demo's purchase. It does
// everything obolo-demo does around the reader (the same libraries, the kit's
// log sink silenced, a session store in a temporary directory, the embedded
// sandbox started, the kit's variables set, then everything stopped), but
// plays no reader: no paywall, no call, no view.

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/log.h"
#include "platform/main_loop.h"
#include "platform/sqlite_preference_store.h"
#include "sandbox/sandbox.h"

int main() {
  using namespace obolo;
  MainLoop::main();
  SetLogSink(NullLogSink());

  std::string directory = (std::filesystem::temp_directory_path() / "obolo-idle-XXXXXX").string();
  if (mkdtemp(directory.data()) == nullptr) return 1;
  PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(directory + "/preferences.sqlite3"));

  sandbox::Sandbox service;
  if (!service.start()) {
    std::fprintf(stderr, "obolo-bench-idle: the sandbox cannot start: %s\n", service.error().c_str());
    return 1;
  }
  setenv("OBOLO_API_BASE_URL", service.baseUrl().c_str(), 1);
  setenv("OBOLO_CA_FILE", service.caFile().c_str(), 1);
  MainLoop::main().runFor(std::chrono::milliseconds(50));

  PreferenceStore::setStandard(nullptr);
  service.stop();
  std::filesystem::remove_all(directory);
  return 0;
}
