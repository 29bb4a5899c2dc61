// A screen controller: owns a screen's view, takes part in containment (parent
// and children) and in modal presentation.
//
// The view is built lazily: the first call of view() runs loadView() (by
// default a plain view the size of the main screen that follows its
// superview's size) and then viewDidLoad(), exactly once and in that order.
// Called from inside them, view() never loads again: it returns the view set so
// far (null in loadView() until setView()).
//
// Ownership: a parent owns its children and refers to them from the child
// weakly; a presenter owns the controller it presents, which refers back
// weakly. A child that presents hands the presentation to the root of its
// containment tree, as the platform does, so presentedViewController() reads
// the same from either.
//
// Presentation is a transition that completes on a later turn of the main loop,
// never inside the call: present() sets the links, loads the destination's
// view (and, when the presenter is in a window, adds it over the window) and
// calls viewWillAppear; a later turn calls viewDidAppear and then the
// completion. dismiss() works from the presenter or the presented controller;
// the links are cut and the completion runs on a later turn. A controller that
// is already presenting (or dismissing) refuses another presentation, logging
// one line, and its completion never runs; so does a dismiss() with nothing to
// dismiss.
//
// Main thread only. Controllers live in std::shared_ptr (see NSObject).

#ifndef OBOLO_TOOLKIT_UI_VIEW_CONTROLLER_H_
#define OBOLO_TOOLKIT_UI_VIEW_CONTROLLER_H_

#include <any>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/modal_presentation_style.h"
#include "toolkit/ns_object.h"
#include "toolkit/ui_storyboard.h"
#include "toolkit/ui_storyboard_segue.h"
#include "toolkit/ui_view.h"

namespace obolo {

class UINavigationController;

class UIViewController : public NSObject {
 public:
  UIViewController();
  ~UIViewController() override;

  // --- The view ---
  // The view, loaded on first use (see above); the view if loaded, else null;
  // whether it is loaded; loading it now.
  std::shared_ptr<UIView> view();
  std::shared_ptr<UIView> viewIfLoaded() const { return view_; }
  bool isViewLoaded() const { return view_ != nullptr; }
  void loadViewIfNeeded() { view(); }
  // Sets the view; loadView() overrides call this. Does not run viewDidLoad().
  void setView(std::shared_ptr<UIView> view) { view_ = std::move(view); }

  // Overridable steps of the life cycle. Overrides call the base first.
  virtual void loadView();
  virtual void viewDidLoad() {}
  virtual void viewWillAppear(bool /*animated*/) {}
  virtual void viewDidAppear(bool /*animated*/) {}
  virtual void viewWillDisappear(bool /*animated*/) {}
  virtual void viewDidDisappear(bool /*animated*/) {}

  // --- Containment ---
  // Makes `child` a child of this controller (taking it from a former parent).
  // As on the platform, the caller adds the child's view where it belongs.
  void addChild(const std::shared_ptr<UIViewController>& child);
  void removeFromParent();
  const std::vector<std::shared_ptr<UIViewController>>& children() const { return children_; }
  std::shared_ptr<UIViewController> parent() const { return parent_.lock(); }
  // The nearest ancestor that is a navigation controller, if any.
  std::shared_ptr<UINavigationController> navigationController() const;

  // --- Presentation ---
  // Presents `controller` modally over this one, or dismisses what this one
  // presents (or itself, when presented); both complete on a later turn (see
  // above). Then the links either way, whether a transition is under way, and
  // the style this controller is presented in.
  void present(const std::shared_ptr<UIViewController>& controller, bool animated,
               std::function<void()> completion = nullptr);
  void dismiss(bool animated, std::function<void()> completion = nullptr);
  std::shared_ptr<UIViewController> presentedViewController() const;
  std::shared_ptr<UIViewController> presentingViewController() const;
  bool isBeingPresented() const { return being_presented_; }
  bool isBeingDismissed() const { return being_dismissed_; }
  UIModalPresentationStyle modalPresentationStyle() const { return modal_presentation_style_; }
  void setModalPresentationStyle(UIModalPresentationStyle style) { modal_presentation_style_ = style; }

  // --- Storyboards ---
  // The storyboard this controller was instantiated from, and its scene.
  const std::optional<UIStoryboard>& storyboard() const { return storyboard_; }
  const std::string& sceneIdentifier() const { return scene_identifier_; }
  // Looks the segue up in this controller's storyboard, instantiates the
  // destination, calls prepare(segue, sender) and presents the destination
  // (animated). Without such a segue it logs one line and does nothing.
  void performSegue(std::string_view identifier, std::any sender);
  virtual void prepare(const UIStoryboardSegue& /*segue*/, const std::any& /*sender*/) {}

 private:
  friend class UIStoryboard;
  friend class UIWindow;

  // The root of this controller's containment tree: the one that presents.
  std::shared_ptr<UIViewController> presentationHost();
  std::shared_ptr<const UIViewController> presentationHost() const;
  // Appearance calls for this controller and its children.
  void forwardAppearance(bool appearing, bool did, bool animated);

  std::shared_ptr<UIView> view_;
  bool loading_view_ = false;
  std::weak_ptr<UIViewController> parent_;
  std::vector<std::shared_ptr<UIViewController>> children_;
  std::shared_ptr<UIViewController> presented_;
  std::weak_ptr<UIViewController> presenting_;
  bool being_presented_ = false;
  bool being_dismissed_ = false;
  bool view_added_by_presentation_ = false;
  UIModalPresentationStyle modal_presentation_style_ = UIModalPresentationStyle::automatic;
  std::optional<UIStoryboard> storyboard_;
  std::string scene_identifier_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_VIEW_CONTROLLER_H_
