// A remote image for an image view (the publisher's logo).

#ifndef OBOLO_UI_IMAGE_VIEW_HELPERS_H_
#define OBOLO_UI_IMAGE_VIEW_HELPERS_H_

#include <memory>
#include <string_view>

#include "toolkit/ui_image_view.h"

namespace obolo {

// Starts a large activity indicator the size of the image view, shown over it
// only when the view shows no image yet, and logs `urlString` as one line.
// Unless `urlString` is a URL, that is all. Otherwise a plain GET goes out on
// HttpSession::shared(); its completion, on the session's thread:
//  - after a transport failure logs the failure's description and stops (the
//    indicator, if shown, stays and keeps spinning);
//  - otherwise decodes the body there, on the session's thread, then hops to
//    the main loop, which removes the indicator and sets the decoded image,
//    whatever the HTTP status; a body that is not an image (or exceeds the
//    pixel limit of image_decoder.h) leaves the view with no image.
// An address with a scheme other than http or https fails as the platform's
// session fails it, with "unsupported URL". The pending download keeps the
// image view alive until it completes. Call on the main thread.
void imageFromURL(const std::shared_ptr<UIImageView>& imageView, std::string_view urlString);

}  // namespace obolo

#endif  // OBOLO_UI_IMAGE_VIEW_HELPERS_H_
