// obolo-render: draws the paywall for a bid answer, as the kit would show it
// on a reader's phone. See RenderToolUsage() for the options.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/log.h"
#include "preview/card_preview.h"
#include "tools/obolo-render/render_options.h"

namespace {

std::optional<std::string> ReadAll(const std::string& path) {
  if (path == "-") return std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

const char* PositionName(obolo::Position position) {
  switch (position) {
    case obolo::Position::top:
      return "top";
    case obolo::Position::bottom:
      return "bottom";
    case obolo::Position::center:
      break;
  }
  return "center";
}

}  // namespace

int main(int argc, char** argv) {
  using namespace obolo;
  const std::string program = argc > 0 ? std::filesystem::path(argv[0]).filename().string() : "obolo-render";
  const auto options = tools::ParseRenderToolOptions(std::vector<std::string>(argv + 1, argv + argc));
  if (!options.error.empty()) {
    std::cerr << program << ": " << options.error << "\n\n" << tools::RenderToolUsage(program);
    return 2;
  }
  if (options.help) {
    std::cout << tools::RenderToolUsage(program);
    return 0;
  }
  // The kit's diagnostic lines (the calls it makes, the answer it decoded)
  // would drown the one line this tool prints.
  SetLogSink(NullLogSink());

  CardPreviewRequest request;
  const auto bid = ReadAll(options.bidFile);
  if (!bid) {
    std::cerr << program << ": cannot read the bid answer " << options.bidFile << "\n";
    return 1;
  }
  request.bidAnswer = *bid;
  if (!options.logoFile.empty()) {
    request.logo = ReadAll(options.logoFile);
    if (!request.logo) {
      std::cerr << program << ": cannot read the logo " << options.logoFile << "\n";
      return 1;
    }
  }
  request.position = options.position;
  request.screen = options.screen;
  request.scale = options.scale;

  const CardPreview preview = RenderCardPreview(request);
  if (!preview.image.ok()) {
    std::cerr << program << ": " << preview.image.error() << "\n";
    return 1;
  }
  if (const std::string error = preview.image.writePng(options.outputFile); !error.empty()) {
    std::cerr << program << ": " << error << "\n";
    return 1;
  }
  std::ostringstream what;
  if (preview.outcome == "card") {
    what << "the card at " << PositionName(options.position);
  } else if (preview.outcome == "reveal") {
    what << "the thank-you splash (the article is paid for already)";
  } else {
    what << "no paywall (it does not apply to this bid)";
  }
  std::cout << options.outputFile << ": " << what.str() << ", " << options.screen.width << "x"
            << options.screen.height << " points at " << options.scale << "x\n";
  return 0;
}
