// A small real web server of a test's own on 127.0.0.1, over HTTP or HTTPS: an
// origin other than the sandbox, for redirects to point at and for answers the
// sandbox does not give (chains of redirects, chunked bodies).
//
// It records every request it receives, whatever the method or the path, and
// answers each with the test's handler; by default HTTP 200 and a JSON object
// that decodes into most of the kit's envelopes, so an answer that should
// never have been asked for shows in the kit's callbacks.
//
// Every HTTPS loopback origin of a process uses the same certificate (for
// 127.0.0.1 and localhost), so one trusted file covers them all; TrustedFile()
// adds another certificate to it, such as the sandbox's.

#ifndef OBOLO_TESTS_SUPPORT_LOOPBACK_ORIGIN_H_
#define OBOLO_TESTS_SUPPORT_LOOPBACK_ORIGIN_H_

#include <httplib.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/recorded_request.h"

namespace obolo::testing {

class LoopbackOrigin {
 public:
  using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;
  // The default answer's message.
  static constexpr char kDefaultMessage[] = "answered by another origin";

  explicit LoopbackOrigin(bool https);
  // Stops serving.
  ~LoopbackOrigin();
  LoopbackOrigin(const LoopbackOrigin&) = delete;
  LoopbackOrigin& operator=(const LoopbackOrigin&) = delete;

  // Binds a free port and serves; returns once requests are accepted. False
  // when the server cannot start.
  bool start();
  // "https://127.0.0.1:PORT" (or http), no trailing slash; empty until started.
  std::string baseUrl() const { return base_url_; }

  // Replaces the answer to every later request. Runs on a server thread.
  void setHandler(Handler handler);
  // Every request received so far, in arrival order.
  std::vector<sandbox::RecordedRequest> requests() const;
  void clearRequests();

  // The PEM file of the certificate every HTTPS loopback origin presents.
  static const std::string& CertificateFile();
  // A PEM file trusting that certificate and the one in `otherPem`, for
  // OBOLO_CA_FILE; it lives as long as the process.
  static std::string TrustedFile(const std::string& otherPem);

 private:
  void serve(const httplib::Request& request, httplib::Response& response);

  const bool https_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  std::string base_url_;
  mutable std::mutex mutex_;
  Handler handler_;                                // guarded by mutex_
  std::vector<sandbox::RecordedRequest> requests_;  // guarded by mutex_
};

}  // namespace obolo::testing

#endif  // OBOLO_TESTS_SUPPORT_LOOPBACK_ORIGIN_H_
