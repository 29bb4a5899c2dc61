#include "support/call_probe.h"

#include <vector>

#include "platform/curl_http_session.h"

namespace obolo::testing {

class TransferObserver::Session final : public HttpSession {
 public:
  void dataTask(HttpRequest request, CompletionHandler handler) override {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      requests_.push_back(request);
    }
    inner_->dataTask(std::move(request), [this, handler = std::move(handler)](HttpOutcome outcome) {
      if (handler) handler(std::move(outcome));
      std::lock_guard<std::mutex> lock(mutex_);
      ++handled_;
      changed_.notify_all();
    });
  }

  bool waitForHandled(int count, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return handled_ >= count; });
  }
  int handled() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return handled_;
  }
  std::vector<HttpRequest> requests() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  int handled_ = 0;
  std::vector<HttpRequest> requests_;
  // Declared last so it is destroyed first: its destructor stops the thread
  // that runs handlers touching the members above.
  std::unique_ptr<CurlHttpSession> inner_ = std::make_unique<CurlHttpSession>();
};

TransferObserver::TransferObserver() : session_(std::make_shared<Session>()) { HttpSession::setShared(session_); }

TransferObserver::~TransferObserver() { HttpSession::setShared(nullptr); }

bool TransferObserver::waitForHandled(int count, std::chrono::milliseconds timeout) {
  return session_->waitForHandled(count, timeout);
}

int TransferObserver::handled() const { return session_->handled(); }

std::vector<HttpRequest> TransferObserver::requests() const { return session_->requests(); }

}  // namespace obolo::testing
