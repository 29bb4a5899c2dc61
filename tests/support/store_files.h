// What tests of the preference file look at: the file alone, as a backup or a
// migration would copy it, and the store's own log lines.

#ifndef OBOLO_TESTS_SUPPORT_STORE_FILES_H_
#define OBOLO_TESTS_SUPPORT_STORE_FILES_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/preference_store.h"
#include "support/log_capture.h"
#include "support/temporary_store.h"

namespace obolo::testing {

// Copies the file at `path` and nothing else (no -journal, no -wal beside it)
// into a fresh directory next to it; returns the copy's path.
std::string CopyFileAlone(const std::string& path);

// What a fresh store of its own reads from the file at `path`.
StoredSession SessionInFile(const std::string& path);
std::optional<PreferenceValue> ValueInFile(const std::string& path, std::string_view key);

// Returns once `done` is true, polling. It has no time limit of its own: the
// test's timeout is the limit, so no test depends on how fast a machine is.
void WaitUntil(const std::function<bool()>& done);

// The lines of `log` that the preference store wrote.
std::vector<std::string> StoreLines(const LogCapture& log);

// A sequence of a reader's sessions, distinct in every value.
StoredSession NumberedSession(int n);

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_STORE_FILES_H_
