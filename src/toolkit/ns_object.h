// The root of the toolkit's reference types: views, controllers, gesture
// recognisers, alert actions.
//
// Such objects live in std::shared_ptr (create them with std::make_shared):
// the toolkit hands out shared pointers to itself where the platform hands out
// references, and keeps weak ones where the platform's references are weak
// (superviews, parents, targets, delegates). An object that is not owned by a
// shared_ptr still works, but cannot be found through weak references.
//
// Associated objects attach other objects to any object under a key, the
// address of a static: the object retains them until they are replaced or it
// dies, and reading one yields it only as the requested type. Main thread only,
// like the platform's non-atomic associations.

#ifndef OBOLO_TOOLKIT_NS_OBJECT_H_
#define OBOLO_TOOLKIT_NS_OBJECT_H_

#include <memory>
#include <utility>
#include <vector>

namespace obolo {

class NSObject : public std::enable_shared_from_this<NSObject> {
 public:
  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject();

  // Attaches `value` under `key`, replacing (and releasing) what was there; a
  // null value removes the association.
  void setAssociatedObject(const void* key, std::shared_ptr<NSObject> value);

  // The object attached under `key` if it is a T (or derives from one), null
  // otherwise.
  template <class T>
  std::shared_ptr<T> associatedObject(const void* key) const {
    return std::dynamic_pointer_cast<T>(associatedObjectAny(key));
  }

 protected:
  // This object as its own type; null when no shared_ptr owns it.
  template <class T>
  std::shared_ptr<T> selfAs(T* self) {
    auto owner = weak_from_this().lock();
    return owner ? std::shared_ptr<T>(owner, self) : nullptr;
  }
  template <class T>
  std::shared_ptr<const T> selfAs(const T* self) const {
    auto owner = weak_from_this().lock();
    return owner ? std::shared_ptr<const T>(owner, self) : nullptr;
  }

 private:
  std::shared_ptr<NSObject> associatedObjectAny(const void* key) const;

  std::vector<std::pair<const void*, std::shared_ptr<NSObject>>> associations_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_NS_OBJECT_H_
