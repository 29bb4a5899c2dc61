#include "ui/image_view_helpers.h"

#include <string>
#include <utility>

#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/url.h"

namespace obolo {

void imageFromURL(const std::shared_ptr<UIImageView>& imageView, std::string_view urlString) {
  if (!imageView) return;
  auto indicator = std::make_shared<UIActivityIndicatorView>(UIActivityIndicatorView::Style::large);
  const CGRect frame = imageView->frame();
  indicator->setFrame(CGRect(0, 0, frame.width(), frame.height()));
  indicator->startAnimating();
  if (!imageView->image()) imageView->addSubview(indicator);

  LogLine(urlString);
  auto url = URL::fromString(urlString);
  if (!url) return;
  const std::string scheme = url->scheme();
  if (scheme != "http" && scheme != "https") {
    LogLine("unsupported URL");
    return;
  }

  HttpRequest request;
  request.url = url->absoluteString();
  HttpSession::shared()->dataTask(std::move(request), [imageView, indicator](HttpOutcome outcome) {
    if (outcome.error != TransportError::kNone || !outcome.body) {
      LogLine(outcome.errorDescription);
      return;
    }
    // Decoded here, on the session's thread: a large or hostile image costs
    // this thread its time, never the main loop. Only the finished image
    // (or null) goes over.
    std::shared_ptr<const UIImage> decoded = UIImage::fromData(std::move(*outcome.body));
    MainLoop::main().post([imageView, indicator, image = std::move(decoded)]() mutable {
      indicator->removeFromSuperview();
      imageView->setImage(std::move(image));
    });
  });
}

}  // namespace obolo
