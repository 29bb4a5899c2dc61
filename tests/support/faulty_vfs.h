// A SQLite VFS that forwards to the default one and makes the file fail on
// demand, the way SQLite's own tests inject faults: the store under test opens
// its real file through it (SqlitePreferenceStore's `vfs` argument), and every
// fault is what the file system or another process would answer.

#ifndef OBOLO_TESTS_SUPPORT_FAULTY_VFS_H_
#define OBOLO_TESTS_SUPPORT_FAULTY_VFS_H_

#include <string>

namespace obolo::testing {

enum class FileFault {
  kNone,
  kDiskFull,         // every write and truncation: SQLITE_FULL
  kIoError,          // every write and sync: SQLITE_IOERR_WRITE / _FSYNC
  kReadOnly,         // the database opens read-only, no journal can be created
  kHeldForWriting,   // another process holds the write lock: reads work, writes are busy
  kHeldExclusively,  // another process holds every lock: reads and writes are busy
  kDamagedPages,     // every page after the first reads back as garbage
};

const char* FileFaultName(FileFault fault);

// Registers the VFS on first use (not as the default) and returns its name.
std::string FaultyVfsName();

// The fault every file opened through the VFS shows from now on; kNone clears
// it. May be called from any thread.
void InjectFileFault(FileFault fault);

// Injects a fault for its lifetime and clears it on destruction.
class ScopedFileFault {
 public:
  explicit ScopedFileFault(FileFault fault) { InjectFileFault(fault); }
  ~ScopedFileFault() { InjectFileFault(FileFault::kNone); }
  ScopedFileFault(const ScopedFileFault&) = delete;
  ScopedFileFault& operator=(const ScopedFileFault&) = delete;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_FAULTY_VFS_H_
