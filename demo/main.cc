// obolo-demo: a headless host app that plays a reader through an article
// purchase and prints, step by step, what the reader sees and how long each
// step took. See DemoUsage() for the options.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "demo/demo_options.h"
#include "demo/reader.h"
#include "platform/log.h"
#include "platform/sqlite_preference_store.h"
#include "sandbox/sandbox.h"

namespace {

// The kit reads each of these once, at first use: they are set before any kit
// code runs.
void PointTheKitAt(const std::string& origin, const std::string& caFile, const std::string& logoUrl) {
  setenv("OBOLO_API_BASE_URL", origin.c_str(), 1);
  setenv("OBOLO_WALLET_ORIGIN", origin.c_str(), 1);
  setenv("OBOLO_REDIRECT_ORIGIN", origin.c_str(), 1);
  setenv("OBOLO_LOGIN_LOGO_URL", logoUrl.c_str(), 1);
  if (!caFile.empty()) setenv("OBOLO_CA_FILE", caFile.c_str(), 1);
}

std::string TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "obolo-demo-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return "";
  return pattern;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace obolo;
  const std::string program = argc > 0 ? std::filesystem::path(argv[0]).filename().string() : "obolo-demo";
  const demo::DemoOptions options = demo::ParseDemoOptions(std::vector<std::string>(argv + 1, argv + argc));
  if (!options.error.empty()) {
    std::cerr << program << ": " << options.error << "\n\n" << demo::DemoUsage(program);
    return 2;
  }
  if (options.help) {
    std::cout << demo::DemoUsage(program);
    return 0;
  }

  // The kit's own diagnostic lines are the host's to route: hidden by default,
  // on standard error with --verbose, so the timeline reads cleanly.
  if (options.verbose) {
    SetLogSink([](std::string_view line, LogContent) { std::cerr << "  kit: " << line << "\n"; });
  } else {
    SetLogSink(NullLogSink());
  }

  // A reader's session store of its own, so every run starts as a new reader.
  const std::string directory = TemporaryDirectory();
  PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(
      directory.empty() ? std::string() : directory + "/preferences.sqlite3"));

  std::unique_ptr<sandbox::Sandbox> service;
  demo::Service target;
  if (options.baseUrl.empty()) {
    service = std::make_unique<sandbox::Sandbox>();
    if (!service->start()) {
      std::cerr << program << ": the embedded sandbox cannot start: " << service->error() << "\n";
      return 1;
    }
    target = {service->baseUrl(), service->caFile(), service->logoUrl(), service.get()};
  } else {
    const char* ca = std::getenv("OBOLO_CA_FILE");
    target = {options.baseUrl, ca == nullptr ? "" : ca, options.baseUrl + "/assets/publisher-logo.png", nullptr};
  }
  PointTheKitAt(target.origin, target.caFile, target.logoUrl);

  const int status = demo::PlayReader(options, target);

  PreferenceStore::setStandard(nullptr);
  if (service) service->stop();
  if (!directory.empty()) std::filesystem::remove_all(directory);
  return status;
}
