// Figure 1: one service call through NetworkManager::shared(), from issuing a
// logged-out create bid to its decoded answer reaching the completion, against
// the same request made with bare libcurl (bench/bare_client.h). The ratio is
// the kit's own overhead per call.
//
// Connection policy, the same for both: keep-alive. Each client keeps its
// connection open between calls, and the bench's sandbox keeps it for up to
// 10,000 requests, so after the warm-up call neither makes TLS handshakes
// ("connections_per_call" shows it for the bare client).
//
// "process_cpu_us" is the CPU time of the whole process per call: client,
// HTTP session thread and the in-process sandbox, whose share is the same
// for both.

#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "bench/bare_client.h"
#include "bench/bench_environment.h"
#include "bench/bid_request.h"
#include "bench/completion_waiter.h"
#include "bench/process_cpu.h"
#include "network/network_manager.h"

namespace obolo::bench {
namespace {

constexpr std::chrono::milliseconds kCallTimeout{10'000};

// Shared with the closures, which may still run after a call timed out.
bool KitCall(const CreateLoggedBidParam& param, const std::shared_ptr<CompletionWaiter>& waiter) {
  NetworkManager::shared().createLoggedOutBid(
      param, [waiter](OboloData envelope) { waiter->signal(envelope.success == true && envelope.data.has_value()); },
      [waiter](std::string) { waiter->signal(false); });
  return waiter->wait(kCallTimeout);
}

void BM_ServiceCall_Kit(benchmark::State& state) {
  BenchEnvironment::sandbox().clearRequests();
  const CreateLoggedBidParam param = LoggedOutBidParam();
  auto waiter = std::make_shared<CompletionWaiter>();
  if (!KitCall(param, waiter)) {  // warms the session's connection up
    state.SkipWithError("the kit's create bid did not complete");
    return;
  }
  const double cpu_start = ProcessCpuSeconds();
  for (auto _ : state) {
    if (!KitCall(param, waiter)) {
      state.SkipWithError("the kit's create bid did not complete");
      break;
    }
  }
  ReportProcessCpu(state, cpu_start);
}
BENCHMARK(BM_ServiceCall_Kit)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_ServiceCall_BareCurl(benchmark::State& state) {
  BenchEnvironment::sandbox().clearRequests();
  BareClient client(LoggedOutBidWireRequest());
  std::string body;
  if (client.roundTrip(body) != 200) {
    state.SkipWithError("the bare create bid failed");
    return;
  }
  const long warm_connections = client.connectionsOpened();
  const double cpu_start = ProcessCpuSeconds();
  for (auto _ : state) {
    if (client.roundTrip(body) != 200) {
      state.SkipWithError("the bare create bid failed");
      break;
    }
    benchmark::DoNotOptimize(body.data());
  }
  ReportProcessCpu(state, cpu_start);
  if (state.iterations() > 0) {
    state.counters["connections_per_call"] = static_cast<double>(client.connectionsOpened() - warm_connections) /
                                             static_cast<double>(state.iterations());
  }
}
BENCHMARK(BM_ServiceCall_BareCurl)->UseRealTime()->Unit(benchmark::kMicrosecond);

// The bare client driven the way the kit's design drives every call: the
// request is handed to a thread of its own and the answer handed back, one
// wake-up each way. Against BM_ServiceCall_BareCurl it prices the design's two
// thread hand-offs; against BM_ServiceCall_Kit, what the kit adds beyond them
// (building the body, a fresh easy handle per transfer, decoding the answer).
class BareClientOnThread {
 public:
  explicit BareClientOnThread(WireRequest request) : client_(std::move(request)), thread_([this] { Serve(); }) {}
  ~BareClientOnThread() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }

  // The HTTP status of one round trip made on the thread.
  long roundTrip() {
    std::unique_lock<std::mutex> lock(mutex_);
    pending_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !pending_; });
    return status_;
  }

 private:
  void Serve() {
    std::string body;
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return pending_ || stopping_; });
      if (stopping_) return;
      lock.unlock();
      const long status = client_.roundTrip(body);
      lock.lock();
      status_ = status;
      pending_ = false;
      changed_.notify_all();
    }
  }

  BareClient client_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool pending_ = false;   // guarded by mutex_
  bool stopping_ = false;  // guarded by mutex_
  long status_ = 0;        // guarded by mutex_
  std::thread thread_;
};

void BM_ServiceCall_BareCurlOnThread(benchmark::State& state) {
  BenchEnvironment::sandbox().clearRequests();
  BareClientOnThread client(LoggedOutBidWireRequest());
  if (client.roundTrip() != 200) {
    state.SkipWithError("the bare create bid failed");
    return;
  }
  const double cpu_start = ProcessCpuSeconds();
  for (auto _ : state) {
    if (client.roundTrip() != 200) {
      state.SkipWithError("the bare create bid failed");
      break;
    }
  }
  ReportProcessCpu(state, cpu_start);
}
BENCHMARK(BM_ServiceCall_BareCurlOnThread)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace obolo::bench
