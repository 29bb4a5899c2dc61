// The options of the obolo-sandbox program:
//
//   obolo-sandbox [--port N] [--http] [--access-token-lifetime SECONDS]
//                 [--refresh-token-lifetime SECONDS] [--help]

#ifndef OBOLO_SANDBOX_COMMAND_LINE_H_
#define OBOLO_SANDBOX_COMMAND_LINE_H_

#include <string>
#include <vector>

#include "sandbox/sandbox.h"

namespace obolo::sandbox {

struct CommandLine {
  SandboxOptions options;
  bool help = false;
  // Set when the arguments are not valid; says what is wrong.
  std::string error;
};

// Reads the arguments after the program name. Values may follow their option
// as the next argument or after '=' ("--port=8443").
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

// The usage text, naming the program as `program`.
std::string Usage(const std::string& program);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_COMMAND_LINE_H_
