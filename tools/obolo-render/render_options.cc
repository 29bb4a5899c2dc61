#include "tools/obolo-render/render_options.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>

#include "tools/cli/parse_command_line.h"

namespace obolo::tools {
namespace {

// A positive number, all of `text`; false otherwise.
bool ParseNumber(const std::string& text, double& out) {
  if (text.empty()) return false;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !(value > 0)) return false;
  out = value;
  return true;
}

// "WIDTHxHEIGHT" in points, each side at most 4096; false otherwise.
bool ParseSize(const std::string& text, CGSize& out) {
  const auto x = text.find('x');
  double width = 0, height = 0;
  if (x == std::string::npos || !ParseNumber(text.substr(0, x), width) || !ParseNumber(text.substr(x + 1), height) ||
      width > 4096 || height > 4096) {
    return false;
  }
  out = CGSize{width, height};
  return true;
}

// The command line, writing what it reads into `options`.
std::unique_ptr<CLI::App> RenderCommandLine(const std::string& program, RenderToolOptions& options) {
  auto app = std::make_unique<CLI::App>(
      "Draws the paywall as the kit shows it for a bid answer: the JSON the service sends back\n"
      "for a bid (\"-\" reads it from standard input). The kit's own logic decides from the\n"
      "answer whether the card, the thank-you splash or nothing shows; nothing goes over the\n"
      "network.",
      program);
  app->get_formatter()->column_width(22);
  app->add_option("--bid", options.bidFile, "the service's answer to a bid, as JSON")
      ->type_name("FILE")
      ->required();
  app->add_option("-o,--output", options.outputFile, "where to write the picture (PNG)")
      ->type_name("FILE")
      ->required();
  app->add_option_function<std::string>(
         "--position",
         [&options](const std::string& name) {
           options.position = name == "top" ? Position::top : name == "bottom" ? Position::bottom : Position::center;
         },
         "where the card sits: top, center (default) or bottom")
      ->type_name("P")
      ->check([](const std::string& name) {
        return name == "top" || name == "center" || name == "bottom"
                   ? std::string()
                   : "unknown position '" + name + "' (top, center or bottom)";
      });
  app->add_option_function<std::string>(
         "--size", [&options](const std::string& text) { ParseSize(text, options.screen); },
         "the reader's screen in points (default 390x844)")
      ->type_name("WxH")
      ->check([](const std::string& text) {
        CGSize unused;
        return ParseSize(text, unused) ? std::string()
                                       : "--size takes WIDTHxHEIGHT in points, such as 390x844, not '" + text + "'";
      });
  app->add_option_function<std::string>(
         "--scale", [&options](const std::string& text) { ParseNumber(text, options.scale); },
         "pixels per point (default 2)")
      ->type_name("N")
      ->check([](const std::string& text) {
        double scale = 0;
        return ParseNumber(text, scale) && scale <= 4
                   ? std::string()
                   : "--scale takes pixels per point up to 4, such as 2, not '" + text + "'";
      });
  app->add_option("--logo", options.logoFile,
                  "the publisher's logo (PNG, JPEG, GIF or WebP); without it, loading")
      ->type_name("FILE");
  return app;
}

}  // namespace

RenderToolOptions ParseRenderToolOptions(const std::vector<std::string>& arguments) {
  RenderToolOptions options;
  auto app = RenderCommandLine("obolo-render", options);
  tools::ParseCommandLine(*app, arguments, options.help, options.error);
  return options;
}

std::string RenderToolUsage(const std::string& program) {
  RenderToolOptions unused;
  return RenderCommandLine(program, unused)->help();
}

}  // namespace obolo::tools
