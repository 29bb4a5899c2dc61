// Runs a CLI11 command line over a program's arguments, the way obolo-demo
// and obolo-render both read theirs: --help is noted rather than printed, and
// a bad option or value becomes a message for the caller to show with the
// usage (and exit 2), instead of an exception.

#ifndef OBOLO_TOOLS_CLI_PARSE_COMMAND_LINE_H_
#define OBOLO_TOOLS_CLI_PARSE_COMMAND_LINE_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace obolo::tools {

// `arguments` without the program's name. Sets `help` on --help, `error` on a
// bad command line; leaves both alone otherwise.
inline void ParseCommandLine(CLI::App& app, const std::vector<std::string>& arguments, bool& help,
                             std::string& error) {
  // CLI11 takes the arguments last first.
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    help = true;
  } catch (const CLI::ParseError& parseError) {
    error = parseError.what();
  }
}

}  // namespace obolo::tools

#endif  // OBOLO_TOOLS_CLI_PARSE_COMMAND_LINE_H_
