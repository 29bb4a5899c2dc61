// Another process holding the preference file: runs obolo_store_holder and
// talks to it over pipes. Used by the tests and the benchmarks.

#ifndef OBOLO_TESTS_SUPPORT_STORE_HOLDER_PROCESS_H_
#define OBOLO_TESTS_SUPPORT_STORE_HOLDER_PROCESS_H_

#include <sys/types.h>

#include <cstdio>
#include <string>

namespace obolo::testing {

class StoreHolderProcess {
 public:
  enum class Hold { kExclusive, kImmediate };

  // Starts `program` on the file at `path` and returns once it holds the lock
  // (held() true) or has failed to (held() false, error() tells why).
  StoreHolderProcess(const std::string& program, const std::string& path, Hold hold);
  // Rolls back and waits for the process to end, unless released already.
  ~StoreHolderProcess();
  StoreHolderProcess(const StoreHolderProcess&) = delete;
  StoreHolderProcess& operator=(const StoreHolderProcess&) = delete;

  bool held() const { return held_; }
  const std::string& error() const { return error_; }

  // Writes `key` as a text inside the held transaction. False on failure.
  bool set(const std::string& key, const std::string& text);
  // Commits (or rolls back) and waits for the process to end: the lock is
  // gone when this returns. True when the process ended well.
  bool release(bool commit);

 private:
  std::string ReadLine();

  pid_t pid_ = -1;
  FILE* to_ = nullptr;
  FILE* from_ = nullptr;
  bool held_ = false;
  std::string error_;
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_STORE_HOLDER_PROCESS_H_
