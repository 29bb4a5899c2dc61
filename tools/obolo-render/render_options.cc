#include "tools/obolo-render/render_options.h"

#include <cstdlib>

namespace obolo::tools {
namespace {

// A positive number, all of `text`; none otherwise.
bool ParseNumber(const std::string& text, double& out) {
  if (text.empty()) return false;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !(value > 0)) return false;
  out = value;
  return true;
}

}  // namespace

RenderToolOptions ParseRenderToolOptions(const std::vector<std::string>& arguments) {
  RenderToolOptions options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string option = arguments[i];
    std::string value;
    bool hasValue = false;
    if (const auto equals = option.find('='); option.starts_with("--") && equals != std::string::npos) {
      value = option.substr(equals + 1);
      option = option.substr(0, equals);
      hasValue = true;
    }
    auto takeValue = [&]() -> bool {
      if (hasValue) return true;
      if (i + 1 >= arguments.size()) {
        options.error = option + " needs a value";
        return false;
      }
      value = arguments[++i];
      return true;
    };

    if (option == "--help" || option == "-h") {
      options.help = true;
    } else if (option == "--bid") {
      if (!takeValue()) return options;
      options.bidFile = value;
    } else if (option == "--output" || option == "-o") {
      if (!takeValue()) return options;
      options.outputFile = value;
    } else if (option == "--logo") {
      if (!takeValue()) return options;
      options.logoFile = value;
    } else if (option == "--position") {
      if (!takeValue()) return options;
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
    } else if (option == "--size") {
      if (!takeValue()) return options;
      const auto x = value.find('x');
      double width = 0, height = 0;
      if (x == std::string::npos || !ParseNumber(value.substr(0, x), width) ||
          !ParseNumber(value.substr(x + 1), height) || width > 4096 || height > 4096) {
        options.error = "--size takes WIDTHxHEIGHT in points, such as 390x844, not '" + value + "'";
        return options;
      }
      options.screen = CGSize{width, height};
    } else if (option == "--scale") {
      if (!takeValue()) return options;
      if (!ParseNumber(value, options.scale) || options.scale > 4) {
        options.error = "--scale takes pixels per point from 0.25 to 4, such as 2, not '" + value + "'";
        return options;
      }
    } else {
      options.error = "unknown option '" + arguments[i] + "'";
      return options;
    }
  }
  if (!options.help && (options.bidFile.empty() || options.outputFile.empty())) {
    options.error = "--bid and --output are needed";
  }
  return options;
}

std::string RenderToolUsage(const std::string& program) {
  return "usage: " + program +
         " --bid FILE --output FILE [--position top|center|bottom] [--size WxH] [--scale N] [--logo FILE]\n"
         "\n"
         "Draws the paywall as the kit shows it for a bid answer: the JSON the service sends back\n"
         "for a bid (\"-\" reads it from standard input). The kit's own logic decides from the\n"
         "answer whether the card, the thank-you splash or nothing shows; nothing goes over the\n"
         "network.\n"
         "\n"
         "  --bid FILE        the service's answer to a bid, as JSON\n"
         "  --output FILE     where to write the picture (PNG)\n"
         "  --position P      where the card sits: top, center (default) or bottom\n"
         "  --size WxH        the reader's screen in points (default 390x844)\n"
         "  --scale N         pixels per point (default 2)\n"
         "  --logo FILE       the publisher's logo (PNG, JPEG, GIF or WebP); without it the logo\n"
         "                    shows as loading\n";
}

}  // namespace obolo::tools
