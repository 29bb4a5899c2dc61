#include "ui/image_view_helpers.h"

#include <cstddef>
#include <string>
#include <utility>

#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/url.h"

namespace obolo {
namespace {

constexpr int kMaxImageRedirects = 5;
// A publisher's logo is tens of kilobytes; 8 MiB still takes a large photo
// and keeps a hostile server from filling the phone's memory.
constexpr std::size_t kMaxImageBytes = 8 * 1024 * 1024;

}  // namespace

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
  // A logo host may move its files: a few hops are followed, never from https
  // to http (a plain-text hop would let anyone on the way swap the image).
  request.maxRedirects = kMaxImageRedirects;
  request.maxBodyBytes = kMaxImageBytes;
  request.background = true;  // the card's bid, sent beside it, goes first
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
