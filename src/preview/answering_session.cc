#include "preview/answering_session.h"

namespace obolo {

AnsweringSession::AnsweringSession(std::string body, std::string imageUrl, std::optional<std::string> image)
    : body_(std::move(body)), image_url_(std::move(imageUrl)), image_(std::move(image)) {
  worker_ = std::thread([this] { serve(); });
}

AnsweringSession::~AnsweringSession() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  worker_.join();
}

void AnsweringSession::dataTask(HttpRequest request, CompletionHandler handler) {
  // No image to give: the request stays unanswered, and its handler goes with
  // the session.
  if (request.url == image_url_ && !image_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.emplace_back(std::move(request), std::move(handler));
  }
  wake_.notify_all();
}

int AnsweringSession::waiting() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(queue_.size()) + in_hand_;
}

int AnsweringSession::answered() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return answered_;
}

void AnsweringSession::serve() {
  for (;;) {
    std::pair<HttpRequest, CompletionHandler> task;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      if (stopping_) return;
      task = std::move(queue_.front());
      queue_.pop_front();
      ++in_hand_;
    }
    HttpOutcome outcome;
    outcome.response = HttpResponse{200, task.first.url, {{"Content-Type", "application/json"}}};
    outcome.body = body_;
    if (task.first.url == image_url_) {
      outcome.response->headers = {{"Content-Type", "image/png"}};
      outcome.body = *image_;
    }
    if (task.second) task.second(std::move(outcome));
    std::lock_guard<std::mutex> lock(mutex_);
    --in_hand_;
    ++answered_;
  }
}

}  // namespace obolo
