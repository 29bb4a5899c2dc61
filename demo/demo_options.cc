#include "demo/demo_options.h"

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/cli/parse_command_line.h"

namespace obolo::demo {
namespace {

constexpr std::array<std::pair<Scenario, const char*>, 5> kScenarios = {{
    {Scenario::kNewReader, "new-reader"},
    {Scenario::kReturningReader, "returning-reader"},
    {Scenario::kExpiredToken, "expired-token"},
    {Scenario::kInsufficientFunds, "insufficient-funds"},
    {Scenario::kServiceDown, "service-down"},
}};

constexpr std::array<std::pair<Position, const char*>, 3> kPositions = {{
    {Position::top, "top"},
    {Position::center, "center"},
    {Position::bottom, "bottom"},
}};

template <typename T, std::size_t N>
std::optional<T> Named(const std::array<std::pair<T, const char*>, N>& names, std::string_view name) {
  for (const auto& [value, candidate] : names) {
    if (name == candidate) return value;
  }
  return std::nullopt;
}

// The command line, writing what it reads into `options`.
std::unique_ptr<CLI::App> DemoCommandLine(const std::string& program, DemoOptions& options) {
  auto app = std::make_unique<CLI::App>(
      "Plays a reader through an article purchase on a headless host app and prints what\n"
      "the reader sees at each step. Without --base-url the sandbox service runs inside the\n"
      "demo on a free loopback port.",
      program);
  app->get_formatter()->column_width(22);
  app->add_option_function<std::string>(
         "--scenario", [&options](const std::string& name) { options.scenario = *Named(kScenarios, name); },
         "what the reader does (below); new-reader by default")
      ->type_name("NAME")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
      ->check([](const std::string& name) {
        return Named(kScenarios, name) ? std::string() : "unknown scenario '" + name + "'";
      });
  app->add_option_function<std::string>(
         "--position", [&options](const std::string& name) { options.position = *Named(kPositions, name); },
         "where the card sits: top, center (default) or bottom")
      ->type_name("P")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
      ->check([](const std::string& name) {
        return Named(kPositions, name) ? std::string()
                                       : "unknown position '" + name + "' (top, center or bottom)";
      });
  app->add_option_function<std::string>(
         "--base-url",
         [&options](std::string url) {
           while (url.ends_with("/")) url.pop_back();
           options.baseUrl = std::move(url);
         },
         "another service to run against (an obolo-sandbox you started, say); OBOLO_CA_FILE\n"
         "                      names its certificate")
      ->type_name("URL")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
      ->check([](const std::string& url) {
        return url.starts_with("https://") || url.starts_with("http://")
                   ? std::string()
                   : "--base-url must be an http or https address, not '" + url + "'";
      });
  app->add_option("--snapshots", options.snapshotDir,
                  "also write a picture of the screen at each step into DIR\n"
                  "                      (01-waiting.png, 02-card.png, ...)")
      ->type_name("DIR")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app->add_flag("--verbose", options.verbose, "also print the kit's own diagnostic lines, on standard error");
  app->footer(
      "Scenarios:\n"
      "  new-reader          logs in on the way, pays, opens the wallet, logs out\n"
      "  returning-reader    logged in already, pays\n"
      "  expired-token       the stored access token has expired and is refreshed first\n"
      "  insufficient-funds  the wallet holds less than the price\n"
      "  service-down        the service does not answer; the article stays readable");
  return app;
}

}  // namespace

std::string ScenarioName(Scenario scenario) {
  for (const auto& [candidate, name] : kScenarios) {
    if (candidate == scenario) return name;
  }
  return "";
}

DemoOptions ParseDemoOptions(const std::vector<std::string>& arguments) {
  DemoOptions options;
  auto app = DemoCommandLine("obolo-demo", options);
  tools::ParseCommandLine(*app, arguments, options.help, options.error);
  return options;
}

std::string DemoUsage(const std::string& program) {
  DemoOptions unused;
  return DemoCommandLine(program, unused)->help();
}

}  // namespace obolo::demo
