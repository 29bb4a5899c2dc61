// The options of obolo-render:
//
//   obolo-render --bid FILE --output FILE [--position top|center|bottom]
//                [--size WIDTHxHEIGHT] [--scale N] [--logo FILE]

#ifndef OBOLO_TOOLS_OBOLO_RENDER_RENDER_OPTIONS_H_
#define OBOLO_TOOLS_OBOLO_RENDER_RENDER_OPTIONS_H_

#include <string>
#include <vector>

#include "entry/position.h"
#include "toolkit/geometry.h"

namespace obolo::tools {

struct RenderToolOptions {
  std::string bidFile;  // "-" for standard input
  std::string outputFile;
  std::string logoFile;  // empty: no logo
  Position position = Position::center;
  CGSize screen{390, 844};
  double scale = 2;
  bool help = false;
  // Set when the arguments are not valid; says what is wrong.
  std::string error;
};

RenderToolOptions ParseRenderToolOptions(const std::vector<std::string>& arguments);
std::string RenderToolUsage(const std::string& program);

}  // namespace obolo::tools

#endif  // OBOLO_TOOLS_OBOLO_RENDER_RENDER_OPTIONS_H_
