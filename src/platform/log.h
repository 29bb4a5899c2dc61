// The one seam through which the kit writes its diagnostic lines.
//
// The kit never shows an error to the reader; what it has to say (a call
// started, an address, a decoded answer, a failure text, a token's expiry)
// goes out as plain lines. By default each line is written to standard output
// exactly as given, followed by a newline. A host can send the lines elsewhere,
// drop the ones that carry credentials, or silence them all.
//
// Thread-safety: LogLine may be called from any thread (network completions run
// on the HTTP session's thread). The sink is called on the logging thread,
// outside any lock of the kit's, so a sink may itself log or block briefly.

#ifndef OBOLO_PLATFORM_LOG_H_
#define OBOLO_PLATFORM_LOG_H_

#include <functional>
#include <string_view>

namespace obolo {

// What a line carries. Lines that contain an access or refresh token, a device
// key, a login key or a request body with any of them are credentials, so a host
// can keep the diagnostics and drop the secrets.
enum class LogContent { kDiagnostic, kCredential };

// Receives each line the kit writes, with what it carries; called on the
// thread that logs.
using LogSink = std::function<void(std::string_view line, LogContent content)>;

// Replaces the sink for every later line. An empty function restores the
// default (standard output).
void SetLogSink(LogSink sink);

// Ready-made sinks.
LogSink StandardOutputLogSink();
LogSink NullLogSink();
// Forwards diagnostics to `next` and drops every credential line.
LogSink WithoutCredentials(LogSink next);

// Writes one line through the current sink. `line` carries no newline.
void LogLine(std::string_view line, LogContent content = LogContent::kDiagnostic);

// False when the current sink is known to drop lines of this content: it is
// NullLogSink(), or WithoutCredentials() and the line is a credential. A
// caller whose line is costly to build (a whole decoded answer) asks first;
// any other sink, the default included, wants every line.
bool LogLineWanted(LogContent content = LogContent::kDiagnostic);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_LOG_H_
