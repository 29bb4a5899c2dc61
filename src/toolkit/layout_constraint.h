// A layout constraint, as far as the kit uses one: an identifier, a constant
// and an active flag.
//
// The toolkit has no constraint solver. Layouts built in code place their views
// with frames and autoresizing masks; their constraints record what the kit's
// screens set (constants and activation), so that screen code and its tests
// read like the platform's. Changing a constraint moves nothing.

#ifndef OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_
#define OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_

#include <string>
#include <utility>

#include "toolkit/geometry.h"
#include "toolkit/ns_object.h"

namespace obolo {

class NSLayoutConstraint : public NSObject {
 public:
  // The platform's required priority.
  static constexpr float kPriorityRequired = 1000;

  NSLayoutConstraint() = default;
  // A constraint as a layout declares it; constraints made in code start
  // inactive on the platform, layouts' start active.
  NSLayoutConstraint(std::string identifier, CGFloat constant, bool active = true)
      : identifier_(std::move(identifier)), constant_(constant), active_(active) {}

  // The name the layout gives it; the distance or size it holds; whether it takes
  // part in layout; and its priority, kPriorityRequired unless lowered.
  const std::string& identifier() const { return identifier_; }
  void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }
  CGFloat constant() const { return constant_; }
  void setConstant(CGFloat constant) { constant_ = constant; }
  bool isActive() const { return active_; }
  void setActive(bool active) { active_ = active; }
  float priority() const { return priority_; }
  void setPriority(float priority) { priority_ = priority; }

 private:
  std::string identifier_;
  CGFloat constant_ = 0;
  bool active_ = false;
  float priority_ = kPriorityRequired;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_LAYOUT_CONSTRAINT_H_
