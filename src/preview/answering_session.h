// An HTTP session that never leaves the process: it answers every request
// itself, from what it was given. The card preview runs the kit's real
// purchase logic over it, so the card shows what the service's answer makes
// the kit show, with no network.
//
// A request for `imageUrl` gets the image's bytes, or, when there are none,
// no answer at all (as a slow network gives none yet); any other request gets
// `body` as a JSON answer with status 200. Handlers run on the session's own
// thread, one at a time, in order, as the platform's session calls them;
// destroying the session drops what it has not answered.

#ifndef OBOLO_PREVIEW_ANSWERING_SESSION_H_
#define OBOLO_PREVIEW_ANSWERING_SESSION_H_

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/http_session.h"

namespace obolo {

class AnsweringSession : public HttpSession {
 public:
  AnsweringSession(std::string body, std::string imageUrl, std::optional<std::string> image);
  ~AnsweringSession() override;

  void dataTask(HttpRequest request, CompletionHandler handler) override;

  // Requests whose handler has returned, and requests still to be answered
  // (not counting those that get no answer).
  int answered() const;
  int waiting() const;

 private:
  void serve();

  const std::string body_;
  const std::string image_url_;
  const std::optional<std::string> image_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::pair<HttpRequest, CompletionHandler>> queue_;  // guarded by mutex_
  bool stopping_ = false;                                        // guarded by mutex_
  int answered_ = 0;                                             // guarded by mutex_
  int in_hand_ = 0;                                              // guarded by mutex_
  std::thread worker_;
};

}  // namespace obolo

#endif  // OBOLO_PREVIEW_ANSWERING_SESSION_H_
