// Storyboards: named sets of screens, and the segues between them, built in
// code and registered by name.
//
// A storyboard definition lists scenes (an identifier and a factory making the
// screen controller) and segues (from a source scene, by identifier, to a
// destination scene, with an optional presentation style). The kit registers
// its own storyboard at start-up; a host or a test may register others.
// Storyboards are compiled in, so the bundle given when one is opened is kept
// for reference but plays no part in finding it.
//
// Registration and instantiation are main-thread operations (registration is
// also safe from any thread).

#ifndef OBOLO_TOOLKIT_UI_STORYBOARD_H_
#define OBOLO_TOOLKIT_UI_STORYBOARD_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bundle.h"
#include "toolkit/modal_presentation_style.h"

namespace obolo {

class UIViewController;

// A storyboard: named screens (scenes) and the segues between them, registered
// in code, since there are no layout files.
class UIStoryboard {
 public:
  // A screen: its identifier and how to make its controller.
  struct Scene {
    std::string identifier;                                  // e.g. "PaywallVCID"
    std::function<std::shared_ptr<UIViewController>()> make;  // a new controller each call
  };
  // A segue always presents its destination modally, in `presentationStyle`
  // when given, otherwise in the destination's own style.
  struct Segue {
    // The scene it starts from, its own identifier, the scene it presents, and
    // the presentation style that overrides the destination's.
    std::string source;
    std::string identifier;
    std::string destination;
    std::optional<UIModalPresentationStyle> presentationStyle;
  };
  // A whole storyboard: its scenes, its segues and the scene it starts with.
  struct Definition {
    // The scenes, the segues between them, and the identifier of the first scene.
    std::vector<Scene> scenes;
    std::vector<Segue> segues;
    std::string initialScene;
  };

  // Registers (or replaces) the storyboard `name`. Storyboards opened before a
  // replacement keep the definition they were opened with.
  static void registerStoryboard(std::string name, Definition definition);

  // Opens the registered storyboard `name`. One that is not registered opens
  // too, but exists() is false and it instantiates nothing.
  explicit UIStoryboard(std::string name, std::optional<Bundle> bundle = std::nullopt);

  // The name and bundle it was opened with, and whether such a storyboard is
  // registered.
  const std::string& name() const { return name_; }
  const std::optional<Bundle>& bundle() const { return bundle_; }
  bool exists() const { return definition_ != nullptr; }

  // A new controller for the scene, which remembers this storyboard and its
  // scene identifier; null for an unknown identifier (or a factory that made
  // nothing).
  std::shared_ptr<UIViewController> instantiateViewController(std::string_view identifier) const;
  // The same, as a T; null when the scene's controller is not a T.
  template <class T>
  std::shared_ptr<T> instantiateViewController(std::string_view identifier) const {
    return std::dynamic_pointer_cast<T>(instantiateViewController(identifier));
  }
  // A new controller for the initial scene; null when there is none.
  std::shared_ptr<UIViewController> instantiateInitialViewController() const;

  // The segue leaving scene `source` under `identifier`, if the storyboard has it.
  std::optional<Segue> segue(std::string_view source, std::string_view identifier) const;

 private:
  std::string name_;
  std::optional<Bundle> bundle_;
  std::shared_ptr<const Definition> definition_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_STORYBOARD_H_
