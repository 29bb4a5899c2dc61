// Keeps a main-thread object alive for closures that run, or are dropped, on
// another thread.
//
// A network call's two closures both hold the screen that issued it, and the
// HTTP session destroys them on its own thread: after one of them has run, or
// without either running when no body arrived. Had they held the screen
// directly, the last reference could go on that thread and the screen, with its
// views, would be torn down there. Both closures share one MainThreadRelease
// instead; when the last of them goes, it hands its reference to the main loop,
// so the object is always released on the main thread.

#ifndef OBOLO_WALLET_MAIN_THREAD_RELEASE_H_
#define OBOLO_WALLET_MAIN_THREAD_RELEASE_H_

#include <memory>
#include <utility>

#include "platform/main_loop.h"

namespace obolo {

template <class T>
class MainThreadRelease {
 public:
  explicit MainThreadRelease(std::shared_ptr<T> object) : object_(std::move(object)) {}
  MainThreadRelease(const MainThreadRelease&) = delete;
  MainThreadRelease& operator=(const MainThreadRelease&) = delete;
  ~MainThreadRelease() {
    if (object_) MainLoop::main().post([object = std::move(object_)] {});
  }

  // The object, for use on the main thread (null when none was given).
  const std::shared_ptr<T>& get() const { return object_; }

 private:
  std::shared_ptr<T> object_;
};

}  // namespace obolo

#endif  // OBOLO_WALLET_MAIN_THREAD_RELEASE_H_
