// A process-wide object that is never destroyed.
//
// The kit's shared state (the log sink, the stores, the service addresses) is
// used from the HTTP session's thread, which may still be finishing a transfer
// while the process exits and runs its static destructors. Objects held here
// outlive every thread, so no thread ever meets one that is being torn down.

#ifndef OBOLO_PLATFORM_NO_DESTRUCTOR_H_
#define OBOLO_PLATFORM_NO_DESTRUCTOR_H_

#include <new>
#include <utility>

namespace obolo {

template <class T>
class NoDestructor {
 public:
  template <class... Args>
  explicit NoDestructor(Args&&... args) {
    new (storage_) T(std::forward<Args>(args)...);
  }
  NoDestructor(const NoDestructor&) = delete;
  NoDestructor& operator=(const NoDestructor&) = delete;

  T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }
  const T& get() const { return *std::launder(reinterpret_cast<const T*>(storage_)); }
  T& operator*() { return get(); }
  const T& operator*() const { return get(); }
  T* operator->() { return &get(); }
  const T* operator->() const { return &get(); }

 private:
  alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace obolo

#endif  // OBOLO_PLATFORM_NO_DESTRUCTOR_H_
