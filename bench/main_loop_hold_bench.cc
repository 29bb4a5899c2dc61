// Figure 6: how long the main loop is held when imageFromURL's download
// arrives, for a normal logo, a decompression bomb and files whose headers
// claim a huge size, against the floor: one main-loop turn that runs an empty
// task. No image may hold the main loop more than 50 ms.
//
// The images come from a plain-HTTP server of the benchmark's own on a
// loopback port. The kit's HTTP session is wrapped so the benchmark learns
// when the download's completion handler has returned: by then it has
// decoded the body (on the session's thread) and posted its task. Only then
// does the clock start, and the main loop runs that one task: the measured
// time is exactly the main loop's share. "call_us" is the imageFromURL call
// itself (also on the main loop); "longest_us" the longest turn of the run.

#include <benchmark/benchmark.h>
#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/completion_waiter.h"
#include "bench/image_samples.h"
#include "platform/http_session.h"
#include "platform/main_loop.h"
#include "sandbox/publisher_logo.h"
#include "ui/image_view_helpers.h"

namespace obolo::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kTimeout{30};

// Serves the images until the process ends.
class ImageServer {
 public:
  ImageServer() {
    serve("/logo.png", sandbox::PublisherLogoPng(), "image/png");
    serve("/bomb.png", DecompressionBombPng(), "image/png");
    serve("/huge.jpg", JpegClaimingHugeSize(), "image/jpeg");
    serve("/huge.webp", WebpClaimingHugeSize(), "image/webp");
    port_ = server_.bind_to_any_port("127.0.0.1");  // bound: connections queue until it listens
    thread_ = std::thread([this] { server_.listen_after_bind(); });
  }
  ~ImageServer() {
    server_.stop();
    thread_.join();
  }

  static ImageServer& get() {
    static ImageServer server;
    return server;
  }
  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

 private:
  void serve(const std::string& path, const std::string& body, const char* type) {
    server_.Get(path, [&body, type](const httplib::Request&, httplib::Response& response) {
      response.set_content(body, type);
    });
  }

  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
};

// Forwards to the kit's session; signals once a completion handler returned.
class SignallingSession : public HttpSession {
 public:
  SignallingSession(std::shared_ptr<HttpSession> inner, std::shared_ptr<CompletionWaiter> waiter)
      : inner_(std::move(inner)), waiter_(std::move(waiter)) {}

  void dataTask(HttpRequest request, CompletionHandler handler) override {
    inner_->dataTask(std::move(request),
                     [waiter = waiter_, handler = std::move(handler)](HttpOutcome outcome) {
                       const bool arrived = outcome.error == TransportError::kNone;
                       handler(std::move(outcome));
                       waiter->signal(arrived);
                     });
  }

 private:
  std::shared_ptr<HttpSession> inner_;
  std::shared_ptr<CompletionWaiter> waiter_;
};

void Report(benchmark::State& state, double call_seconds, double longest_seconds) {
  if (state.iterations() == 0) return;
  state.counters["call_us"] = call_seconds * 1e6 / static_cast<double>(state.iterations());
  state.counters["longest_us"] = longest_seconds * 1e6;
}

void MeasureArrival(benchmark::State& state, const std::string& path, bool image_expected) {
  const std::string url = ImageServer::get().url(path);
  auto waiter = std::make_shared<CompletionWaiter>();
  const auto kit_session = HttpSession::shared();
  HttpSession::setShared(std::make_shared<SignallingSession>(kit_session, waiter));
  MainLoop& loop = MainLoop::main();
  double call_seconds = 0;
  double longest = 0;
  for (auto _ : state) {
    auto view = std::make_shared<UIImageView>(CGRect(0, 0, 64, 64));
    const auto call_start = Clock::now();
    imageFromURL(view, url);
    call_seconds += std::chrono::duration<double>(Clock::now() - call_start).count();
    if (!waiter->wait(kTimeout)) {
      state.SkipWithError("the image did not arrive");
      break;
    }
    // The completion's task is queued; running it removes the indicator.
    const auto start = Clock::now();
    const bool ran = loop.runUntil([&] { return view->subviews().empty(); }, kTimeout);
    const double held = std::chrono::duration<double>(Clock::now() - start).count();
    if (!ran || (view->image() != nullptr) != image_expected) {
      state.SkipWithError(image_expected ? "the image did not show" : "a refused image showed");
      break;
    }
    state.SetIterationTime(held);
    longest = std::max(longest, held);
  }
  HttpSession::setShared(kit_session);
  Report(state, call_seconds, longest);
}

double Largest(const std::vector<double>& values) { return *std::max_element(values.begin(), values.end()); }

void BM_MainLoopHeld_Logo(benchmark::State& state) { MeasureArrival(state, "/logo.png", true); }
void BM_MainLoopHeld_Bomb(benchmark::State& state) { MeasureArrival(state, "/bomb.png", false); }
void BM_MainLoopHeld_HugeJpegHeader(benchmark::State& state) { MeasureArrival(state, "/huge.jpg", false); }
void BM_MainLoopHeld_HugeWebpHeader(benchmark::State& state) { MeasureArrival(state, "/huge.webp", false); }

// The floor: the same measurement of a turn that runs one empty task.
void BM_MainLoopHeld_EmptyTurn(benchmark::State& state) {
  MainLoop& loop = MainLoop::main();
  double longest = 0;
  for (auto _ : state) {
    bool ran = false;
    loop.post([&ran] { ran = true; });
    const auto start = Clock::now();
    loop.runUntil([&ran] { return ran; }, kTimeout);
    const double held = std::chrono::duration<double>(Clock::now() - start).count();
    state.SetIterationTime(held);
    longest = std::max(longest, held);
  }
  Report(state, 0, longest);
}

// A fixed number of arrivals: the measured turns are microseconds, so timing
// by them alone would ask for tens of thousands of downloads.
#define OBOLO_HELD_BENCHMARK(name)    \
  BENCHMARK(name)                     \
      ->UseManualTime()               \
      ->Iterations(200)               \
      ->Unit(benchmark::kMicrosecond) \
      ->ComputeStatistics("max", Largest)

OBOLO_HELD_BENCHMARK(BM_MainLoopHeld_Logo);
OBOLO_HELD_BENCHMARK(BM_MainLoopHeld_Bomb);
OBOLO_HELD_BENCHMARK(BM_MainLoopHeld_HugeJpegHeader);
OBOLO_HELD_BENCHMARK(BM_MainLoopHeld_HugeWebpHeader);
OBOLO_HELD_BENCHMARK(BM_MainLoopHeld_EmptyTurn);

}  // namespace
}  // namespace obolo::bench
