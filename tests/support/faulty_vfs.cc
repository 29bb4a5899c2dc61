#include "support/faulty_vfs.h"

#include <sqlite3.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace obolo::testing {
namespace {

constexpr const char* kName = "obolo-faulty";
constexpr sqlite3_int64 kPageSize = 4096;     // SQLite's default, which the store keeps
constexpr sqlite3_int64 kChangeCounter = 24;  // offset of the file change counter in the header

std::atomic<FileFault> current{FileFault::kNone};

FileFault Fault() { return current.load(std::memory_order_acquire); }

// The file as SQLite sees it, with the default VFS's file right after it.
struct FaultyFile {
  sqlite3_file base;
  bool main_db;
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

FaultyFile& Of(sqlite3_file* file) { return *reinterpret_cast<FaultyFile*>(file); }
const sqlite3_io_methods& Real(sqlite3_file* file) { return *Of(file).real()->pMethods; }
sqlite3_vfs* RealVfs(sqlite3_vfs* vfs) { return static_cast<sqlite3_vfs*>(vfs->pAppData); }

int Close(sqlite3_file* file) { return Real(file).xClose(Of(file).real()); }

int Read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
  const int rc = Real(file).xRead(Of(file).real(), buffer, amount, offset);
  if (rc != SQLITE_OK || Fault() != FileFault::kDamagedPages || !Of(file).main_db) return rc;
  if (offset >= kPageSize) {
    std::memset(buffer, 0xA5, static_cast<size_t>(amount));
  } else if (offset <= kChangeCounter && offset + amount > kChangeCounter) {
    // The damage came from outside: the file's change counter differs from
    // what a connection has cached, so it reads its pages afresh.
    static_cast<unsigned char*>(buffer)[kChangeCounter - offset] ^= 0x5A;
  }
  return rc;
}

int Write(sqlite3_file* file, const void* buffer, int amount, sqlite3_int64 offset) {
  switch (Fault()) {
    case FileFault::kDiskFull:
      return SQLITE_FULL;
    case FileFault::kIoError:
      return SQLITE_IOERR_WRITE;
    case FileFault::kReadOnly:
      return SQLITE_READONLY;
    default:
      return Real(file).xWrite(Of(file).real(), buffer, amount, offset);
  }
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  switch (Fault()) {
    case FileFault::kDiskFull:
      return SQLITE_FULL;
    case FileFault::kIoError:
      return SQLITE_IOERR_TRUNCATE;
    case FileFault::kReadOnly:
      return SQLITE_READONLY;
    default:
      return Real(file).xTruncate(Of(file).real(), size);
  }
}

int Sync(sqlite3_file* file, int flags) {
  if (Fault() == FileFault::kIoError) return SQLITE_IOERR_FSYNC;
  return Real(file).xSync(Of(file).real(), flags);
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) { return Real(file).xFileSize(Of(file).real(), size); }

int Lock(sqlite3_file* file, int level) {
  const FileFault fault = Fault();
  if (Of(file).main_db && ((fault == FileFault::kHeldExclusively && level >= SQLITE_LOCK_SHARED) ||
                           (fault == FileFault::kHeldForWriting && level >= SQLITE_LOCK_RESERVED))) {
    return SQLITE_BUSY;
  }
  return Real(file).xLock(Of(file).real(), level);
}

int Unlock(sqlite3_file* file, int level) { return Real(file).xUnlock(Of(file).real(), level); }

int CheckReservedLock(sqlite3_file* file, int* reserved) {
  const FileFault fault = Fault();
  if (Of(file).main_db && (fault == FileFault::kHeldExclusively || fault == FileFault::kHeldForWriting)) {
    *reserved = 1;
    return SQLITE_OK;
  }
  return Real(file).xCheckReservedLock(Of(file).real(), reserved);
}

int FileControl(sqlite3_file* file, int op, void* argument) {
  return Real(file).xFileControl(Of(file).real(), op, argument);
}
int SectorSize(sqlite3_file* file) { return Real(file).xSectorSize(Of(file).real()); }
int DeviceCharacteristics(sqlite3_file* file) { return Real(file).xDeviceCharacteristics(Of(file).real()); }
int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** out) {
  return Real(file).xShmMap(Of(file).real(), page, size, extend, out);
}
int ShmLock(sqlite3_file* file, int offset, int n, int flags) {
  return Real(file).xShmLock(Of(file).real(), offset, n, flags);
}
void ShmBarrier(sqlite3_file* file) { Real(file).xShmBarrier(Of(file).real()); }
int ShmUnmap(sqlite3_file* file, int remove) { return Real(file).xShmUnmap(Of(file).real(), remove); }
int Fetch(sqlite3_file* file, sqlite3_int64 offset, int amount, void** out) {
  return Real(file).xFetch(Of(file).real(), offset, amount, out);
}
int Unfetch(sqlite3_file* file, sqlite3_int64 offset, void* pointer) {
  return Real(file).xUnfetch(Of(file).real(), offset, pointer);
}

const sqlite3_io_methods kMethods = {
    3,
    Close,
    Read,
    Write,
    Truncate,
    Sync,
    FileSize,
    Lock,
    Unlock,
    CheckReservedLock,
    FileControl,
    SectorSize,
    DeviceCharacteristics,
    ShmMap,
    ShmLock,
    ShmBarrier,
    ShmUnmap,
    Fetch,
    Unfetch,
};

int Open(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* out_flags) {
  FaultyFile& faulty = Of(file);
  faulty.base.pMethods = nullptr;
  faulty.main_db = (flags & SQLITE_OPEN_MAIN_DB) != 0;
  if (Fault() == FileFault::kReadOnly) {
    // What the default VFS does when the file's permissions refuse writing:
    // the database opens read-only, and no journal can be created beside it.
    if (!faulty.main_db) return SQLITE_CANTOPEN;
    if ((flags & SQLITE_OPEN_READWRITE) != 0) {
      flags = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
    }
  }
  const int rc = RealVfs(vfs)->xOpen(RealVfs(vfs), name, faulty.real(), flags, out_flags);
  if (rc == SQLITE_OK) faulty.base.pMethods = &kMethods;
  return rc;
}

// Everything else is the default VFS's.
int Delete(sqlite3_vfs* vfs, const char* name, int sync_dir) {
  return RealVfs(vfs)->xDelete(RealVfs(vfs), name, sync_dir);
}
int Access(sqlite3_vfs* vfs, const char* name, int flags, int* out) {
  return RealVfs(vfs)->xAccess(RealVfs(vfs), name, flags, out);
}
int FullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out) {
  return RealVfs(vfs)->xFullPathname(RealVfs(vfs), name, size, out);
}
void* DlOpen(sqlite3_vfs* vfs, const char* name) { return RealVfs(vfs)->xDlOpen(RealVfs(vfs), name); }
void DlError(sqlite3_vfs* vfs, int size, char* out) { RealVfs(vfs)->xDlError(RealVfs(vfs), size, out); }
void (*DlSym(sqlite3_vfs* vfs, void* handle, const char* symbol))(void) {
  return RealVfs(vfs)->xDlSym(RealVfs(vfs), handle, symbol);
}
void DlClose(sqlite3_vfs* vfs, void* handle) { RealVfs(vfs)->xDlClose(RealVfs(vfs), handle); }
int Randomness(sqlite3_vfs* vfs, int size, char* out) {
  return RealVfs(vfs)->xRandomness(RealVfs(vfs), size, out);
}
int Sleep(sqlite3_vfs* vfs, int microseconds) { return RealVfs(vfs)->xSleep(RealVfs(vfs), microseconds); }
int CurrentTime(sqlite3_vfs* vfs, double* out) { return RealVfs(vfs)->xCurrentTime(RealVfs(vfs), out); }
int GetLastError(sqlite3_vfs* vfs, int size, char* out) {
  return RealVfs(vfs)->xGetLastError(RealVfs(vfs), size, out);
}
int CurrentTimeInt64(sqlite3_vfs* vfs, sqlite3_int64* out) {
  return RealVfs(vfs)->xCurrentTimeInt64(RealVfs(vfs), out);
}

sqlite3_vfs* Register() {
  sqlite3_initialize();
  sqlite3_vfs* real = sqlite3_vfs_find(nullptr);
  if (real == nullptr || real->iVersion < 2) std::abort();
  static sqlite3_vfs vfs = {
      2,
      0,
      0,
      nullptr,
      kName,
      nullptr,
      Open,
      Delete,
      Access,
      FullPathname,
      DlOpen,
      DlError,
      DlSym,
      DlClose,
      Randomness,
      Sleep,
      CurrentTime,
      GetLastError,
      CurrentTimeInt64,
      nullptr,
      nullptr,
      nullptr,
  };
  vfs.szOsFile = static_cast<int>(sizeof(FaultyFile)) + real->szOsFile;
  vfs.mxPathname = real->mxPathname;
  vfs.pAppData = real;
  if (sqlite3_vfs_register(&vfs, /*makeDflt=*/0) != SQLITE_OK) std::abort();
  return &vfs;
}

}  // namespace

const char* FileFaultName(FileFault fault) {
  switch (fault) {
    case FileFault::kNone:
      return "None";
    case FileFault::kDiskFull:
      return "DiskFull";
    case FileFault::kIoError:
      return "IoError";
    case FileFault::kReadOnly:
      return "ReadOnly";
    case FileFault::kHeldForWriting:
      return "HeldForWriting";
    case FileFault::kHeldExclusively:
      return "HeldExclusively";
    case FileFault::kDamagedPages:
      return "DamagedPages";
  }
  return "?";
}

std::string FaultyVfsName() {
  static sqlite3_vfs* const vfs = Register();
  return vfs->zName;
}

void InjectFileFault(FileFault fault) { current.store(fault, std::memory_order_release); }

}  // namespace obolo::testing
