// One performance of a storyboard segue, as the source's prepare() sees it:
// the destination already exists and is not yet presented.

#ifndef OBOLO_TOOLKIT_UI_STORYBOARD_SEGUE_H_
#define OBOLO_TOOLKIT_UI_STORYBOARD_SEGUE_H_

#include <memory>
#include <string>
#include <utility>

namespace obolo {

class UIViewController;

class UIStoryboardSegue {
 public:
  // A segue from `source` to `destination`, as a storyboard performs it.
  UIStoryboardSegue(std::string identifier, std::shared_ptr<UIViewController> source,
                    std::shared_ptr<UIViewController> destination)
      : identifier_(std::move(identifier)),
        source_(std::move(source)),
        destination_(std::move(destination)) {}

  // What it was made with.
  const std::string& identifier() const { return identifier_; }
  const std::shared_ptr<UIViewController>& source() const { return source_; }
  const std::shared_ptr<UIViewController>& destination() const { return destination_; }

 private:
  std::string identifier_;
  std::shared_ptr<UIViewController> source_;
  std::shared_ptr<UIViewController> destination_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_UI_STORYBOARD_SEGUE_H_
