#include "sandbox/command_line.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace obolo::sandbox {
namespace {

// The command line, writing what it reads into `options`.
std::unique_ptr<CLI::App> SandboxCommandLine(const std::string& program, SandboxOptions& options) {
  auto app = std::make_unique<CLI::App>(
      "Runs the Obolo sandbox paywall service on 127.0.0.1 until SIGINT or SIGTERM.", program);
  app->get_formatter()->column_width(36);
  app->add_option("--port", options.port, "port to listen on (default 0: any free port)")
      ->option_text("N")
      ->check(CLI::Range(0, 65535).description(""))
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app->add_flag_callback(
      "--http", [&options] { options.https = false; },
      "plain HTTP instead of HTTPS with a self-signed certificate");
  struct Lifetime {
    const char* name;
    std::chrono::seconds* value;
    const char* description;
  };
  for (const Lifetime& lifetime : {Lifetime{"--access-token-lifetime", &options.accessTokenLifetime,
                                            "lifetime of issued access tokens (default 3600)"},
                                   Lifetime{"--refresh-token-lifetime", &options.refreshTokenLifetime,
                                            "lifetime of issued refresh tokens (default 2592000)"}}) {
    app->add_option_function<long long>(
           lifetime.name,
           [value = lifetime.value](long long seconds) { *value = std::chrono::seconds(seconds); },
           lifetime.description)
        ->option_text("SECONDS")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }
  return app;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  auto app = SandboxCommandLine("obolo-sandbox", result.options);
  // CLI11 takes the arguments last first.
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    app->parse(reversed);
  } catch (const CLI::CallForHelp&) {
    result.help = true;
  } catch (const CLI::ParseError& error) {
    result.error = error.what();
  }
  return result;
}

std::string Usage(const std::string& program) {
  SandboxOptions unused;
  return SandboxCommandLine(program, unused)->help();
}

}  // namespace obolo::sandbox
