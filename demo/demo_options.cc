#include "demo/demo_options.h"

#include <array>
#include <utility>

namespace obolo::demo {
namespace {

constexpr std::array<std::pair<Scenario, const char*>, 5> kScenarios = {{
    {Scenario::kNewReader, "new-reader"},
    {Scenario::kReturningReader, "returning-reader"},
    {Scenario::kExpiredToken, "expired-token"},
    {Scenario::kInsufficientFunds, "insufficient-funds"},
    {Scenario::kServiceDown, "service-down"},
}};

}  // namespace

std::string ScenarioName(Scenario scenario) {
  for (const auto& [candidate, name] : kScenarios) {
    if (candidate == scenario) return name;
  }
  return "";
}

DemoOptions ParseDemoOptions(const std::vector<std::string>& arguments) {
  DemoOptions options;
  for (size_t i = 0; i < arguments.size(); ++i) {
    std::string option = arguments[i];
    std::string value;
    bool has_value = false;
    if (const auto equals = option.find('='); option.starts_with("--") && equals != std::string::npos) {
      value = option.substr(equals + 1);
      option = option.substr(0, equals);
      has_value = true;
    }
    auto take_value = [&]() -> bool {
      if (has_value) return true;
      if (i + 1 >= arguments.size()) {
        options.error = option + " needs a value";
        return false;
      }
      value = arguments[++i];
      return true;
    };

    if (option == "--help" || option == "-h") {
      options.help = true;
    } else if (option == "--verbose") {
      options.verbose = true;
    } else if (option == "--scenario") {
      if (!take_value()) return options;
      bool known = false;
      for (const auto& [scenario, name] : kScenarios) {
        if (value == name) {
          options.scenario = scenario;
          known = true;
        }
      }
      if (!known) {
        options.error = "unknown scenario '" + value + "'";
        return options;
      }
    } else if (option == "--position") {
      if (!take_value()) return options;
      if (value == "top") {
        options.position = Position::top;
      } else if (value == "center") {
        options.position = Position::center;
      } else if (value == "bottom") {
        options.position = Position::bottom;
      } else {
        options.error = "unknown position '" + value + "' (top, center or bottom)";
        return options;
      }
    } else if (option == "--snapshots") {
      if (!take_value()) return options;
      options.snapshotDir = value;
    } else if (option == "--base-url") {
      if (!take_value()) return options;
      if (!value.starts_with("https://") && !value.starts_with("http://")) {
        options.error = "--base-url must be an http or https address, not '" + value + "'";
        return options;
      }
      while (value.ends_with("/")) value.pop_back();
      options.baseUrl = value;
    } else {
      options.error = "unknown option '" + arguments[i] + "'";
      return options;
    }
  }
  return options;
}

std::string DemoUsage(const std::string& program) {
  return "usage: " + program +
         " [--scenario NAME] [--position top|center|bottom] [--base-url URL] [--snapshots DIR]\n"
         "       [--verbose]\n"
         "\n"
         "Plays a reader through an article purchase on a headless host app and prints what\n"
         "the reader sees at each step. Without --base-url the sandbox service runs inside the\n"
         "demo on a free loopback port.\n"
         "\n"
         "  --scenario NAME   new-reader (default): logs in on the way, pays, opens the wallet, logs out\n"
         "                    returning-reader: logged in already, pays\n"
         "                    expired-token: the stored access token has expired and is refreshed first\n"
         "                    insufficient-funds: the wallet holds less than the price\n"
         "                    service-down: the service does not answer; the article stays readable\n"
         "  --position P      where the card sits: top, center (default) or bottom\n"
         "  --base-url URL    run against another service (an obolo-sandbox started by hand, say)\n"
         "                    instead of the embedded one; set OBOLO_CA_FILE for its certificate\n"
         "  --snapshots DIR   also write a picture of the screen at each step into DIR\n"
         "                    (01-waiting.png, 02-card.png, ...)\n"
         "  --verbose         also print the kit's own diagnostic lines, on standard error\n";
}

}  // namespace obolo::demo
