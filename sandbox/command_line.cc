#include "sandbox/command_line.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace obolo::sandbox {
namespace {

std::optional<long long> ParseInteger(std::string_view text) {
  long long value = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string name = arguments[i];
    std::optional<std::string> value;
    if (auto equals = name.find('='); name.starts_with("--") && equals != std::string::npos) {
      value = name.substr(equals + 1);
      name.resize(equals);
    }
    auto take_value = [&]() -> std::optional<std::string> {
      if (value) return value;
      if (i + 1 < arguments.size()) return arguments[++i];
      return std::nullopt;
    };

    if (name == "--help" || name == "-h") {
      result.help = true;
    } else if (name == "--http" && !value) {
      result.options.https = false;
    } else if (name == "--port") {
      auto text = take_value();
      auto port = text ? ParseInteger(*text) : std::nullopt;
      if (!port || *port < 0 || *port > 65535) {
        result.error = "--port needs a port number from 0 to 65535";
        return result;
      }
      result.options.port = static_cast<int>(*port);
    } else if (name == "--access-token-lifetime" || name == "--refresh-token-lifetime") {
      auto text = take_value();
      auto seconds = text ? ParseInteger(*text) : std::nullopt;
      if (!seconds) {
        result.error = name + " needs a number of seconds";
        return result;
      }
      (name == "--access-token-lifetime" ? result.options.accessTokenLifetime
                                         : result.options.refreshTokenLifetime) =
          std::chrono::seconds(*seconds);
    } else {
      result.error = "unknown option " + arguments[i];
      return result;
    }
  }
  return result;
}

std::string Usage(const std::string& program) {
  return "Usage: " + program +
         " [--port N] [--http] [--access-token-lifetime SECONDS] [--refresh-token-lifetime SECONDS]\n"
         "\n"
         "Runs the Obolo sandbox paywall service on 127.0.0.1 until SIGINT or SIGTERM.\n"
         "  --port N                          port to listen on (default 0: any free port)\n"
         "  --http                            plain HTTP instead of HTTPS with a self-signed certificate\n"
         "  --access-token-lifetime SECONDS   lifetime of issued access tokens (default 3600)\n"
         "  --refresh-token-lifetime SECONDS  lifetime of issued refresh tokens (default 2592000)\n";
}

}  // namespace obolo::sandbox
