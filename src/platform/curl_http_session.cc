#include "platform/curl_http_session.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/curl_connection_sockets.h"
#include "platform/environment.h"
#include "platform/no_destructor.h"

namespace obolo {
namespace {

thread_local bool on_session_thread = false;

// libcurl's built-in bundle of the system's certificates, or empty when it
// was built without one (a directory only).
std::string LibcurlDefaultCaFile() {
  CURL* easy = curl_easy_init();
  if (easy == nullptr) return {};
  char* file = nullptr;
  std::string found;
  if (curl_easy_getinfo(easy, CURLINFO_CAINFO, &file) == CURLE_OK && file != nullptr) found = file;
  curl_easy_cleanup(easy);
  return found;
}

// The one file of certificates every connection trusts: OBOLO_CA_FILE, or
// else libcurl's own bundle of the system's store. With a single file as the
// only source, libcurl parses it at the first connection and keeps the parsed
// store for later ones. With its defaults (the bundle and the directory
// beside it) it would parse the whole system bundle again for every new
// connection: 30 to 50 ms of CPU each on a server core, more on a phone. The
// directory is left out; on Debian it holds the same certificates as the
// bundle, both written by update-ca-certificates. Empty when libcurl has no
// bundle of its own: its defaults then stay.
const std::string& TrustedCaFile() {
  static const NoDestructor<std::string> file([] {
    std::string named = EnvironmentOverride("OBOLO_CA_FILE", "");
    return named.empty() ? LibcurlDefaultCaFile() : named;
  }());
  return *file;
}

// Sessions whose threads are running, so the process can stop them when it
// exits: the shared session is never destroyed, and its thread must not be
// using the TLS library while exit tears that library down.
struct LiveSessions {
  std::mutex mutex;
  std::vector<CurlHttpSession*> sessions;
};

LiveSessions& Live() {
  static NoDestructor<LiveSessions> live;
  return *live;
}

void GlobalInitOnce() {
  static const bool initialised = [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // Registered after libcurl's own set-up, which registers the TLS library's
    // clean-up at exit, so this runs before that clean-up.
    std::atexit(&CurlHttpSession::StopAllAtExit);
    return true;
  }();
  (void)initialised;
}

TransportError ErrorFor(CURLcode code) {
  switch (code) {
    case CURLE_OK:
      return TransportError::kNone;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      return TransportError::kInvalidUrl;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return TransportError::kCannotResolveHost;
    case CURLE_COULDNT_CONNECT:
      return TransportError::kCannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
      return TransportError::kTimedOut;
    case CURLE_FILESIZE_EXCEEDED:
      return TransportError::kResponseTooLarge;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
      return TransportError::kSecureConnectionFailed;
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
      return TransportError::kConnectionLost;
    default:
      return TransportError::kOther;
  }
}

bool IsRedirectStatus(long status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool IsHttpsAddress(std::string_view url) {
  constexpr std::string_view kHttps = "https:";
  return url.size() >= kHttps.size() &&
         std::equal(kHttps.begin(), kHttps.end(), url.begin(),
                    [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

}  // namespace

bool IsHttpSessionThread() { return on_session_thread; }

struct CurlHttpSession::Transfer {
  HttpRequest request;
  CompletionHandler handler;
  CURLSH* share = nullptr;                   // the session's; set before Prepare()
  CurlConnectionSockets* sockets = nullptr;  // the session's; set before Prepare()
  long max_idle_seconds = 3;                 // see kCheckedIdleSeconds; set before Prepare()
  CURL* easy = nullptr;
  curl_slist* header_list = nullptr;
  std::string body;
  HttpHeaders response_headers;
  bool sent = false;      // the request went out at least once
  bool answered = false;  // a status line arrived since it last went out
  bool too_large = false;
  int redirects = 0;             // hops followed so far
  std::string redirect_refusal;  // why the next hop was refused; empty while none was
  char error[CURL_ERROR_SIZE] = {};

  ~Transfer() {
    if (easy != nullptr) curl_easy_cleanup(easy);
    if (header_list != nullptr) curl_slist_free_all(header_list);
  }

  static size_t OnBody(char* data, size_t size, size_t count, void* self) {
    auto* transfer = static_cast<Transfer*>(self);
    const size_t bytes = size * count;
    if (bytes > transfer->request.maxBodyBytes - transfer->body.size()) {
      transfer->too_large = true;
      return 0;  // makes libcurl end the transfer with a write error
    }
    transfer->body.append(data, bytes);
    return bytes;
  }

  static size_t OnHeader(char* data, size_t size, size_t count, void* self) {
    auto* transfer = static_cast<Transfer*>(self);
    const size_t bytes = size * count;
    std::string_view line(data, bytes);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    if (line.starts_with("HTTP/")) {
      transfer->answered = true;
      transfer->response_headers.clear();  // a new response after a redirect or 100
    } else if (auto colon = line.find(':'); colon != std::string_view::npos) {
      std::string_view value = line.substr(colon + 1);
      while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
      transfer->response_headers.emplace_back(std::string(line.substr(0, colon)), std::string(value));
    }
    return bytes;
  }

  // Called each time libcurl is about to send the request. A second time
  // without an answer in between is libcurl repeating a request whose reused
  // connection died before any answer came, on a new connection; the service
  // may have acted on the first one already (a payment, a one-time login key,
  // a logout), so the transfer fails instead. Requests that send a body never
  // follow a redirect, so no answer ever leads to a second send either.
  static int OnPrerequest(void* self, char*, char*, int, int) {
    auto* transfer = static_cast<Transfer*>(self);
    if (transfer->sent && !transfer->answered) return CURL_PREREQFUNC_ABORT;
    transfer->sent = true;
    transfer->answered = false;
    return CURL_PREREQFUNC_OK;
  }

  // Prepares the easy handle (a kept one, or a new one): kNone, or why the
  // request cannot go out.
  TransportError Prepare() {
    for (const auto& [name, value] : request.headers) {
      if (!IsSendableHeaderField(name, value)) return TransportError::kInvalidHeader;
    }
    if (easy == nullptr) easy = curl_easy_init();
    if (easy == nullptr) return TransportError::kOther;
    curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, error);
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
    // libcurl follows nothing itself: FollowRedirect() decides each hop.
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    // An answer that announces a body past the cap ends before its body.
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request.maxBodyBytes));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::OnBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Transfer::OnHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    if (!TrustedCaFile().empty()) {
      // The file is the only source (see TrustedCaFile()), so libcurl keeps
      // the parsed store for later connections.
      curl_easy_setopt(easy, CURLOPT_CAINFO, TrustedCaFile().c_str());
      curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    }
    if (share != nullptr) curl_easy_setopt(easy, CURLOPT_SHARE, share);
    if (sockets != nullptr) sockets->track(easy);
    // How long a kept connection may have been idle to carry this request
    // (whole seconds; libcurl reuses it while idle for less than this plus 1).
    curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, max_idle_seconds);

    if (request.method == "GET") {
      curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    } else {
      if (request.method != "POST") curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
      curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &Transfer::OnPrerequest);
      curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
      curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.data());
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    }

    // The fields go out exactly as the caller set them. libcurl's own Accept
    // default is suppressed so a request without Accept sends none, and
    // "Expect: 100-continue" is never added.
    for (const auto& [name, value] : request.headers) {
      std::string line = name;
      line += value.empty() ? ";" : ": " + value;
      header_list = curl_slist_append(header_list, line.c_str());
    }
    if (!request.value("Accept")) header_list = curl_slist_append(header_list, "Accept:");
    header_list = curl_slist_append(header_list, "Expect:");
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, header_list);
    return TransportError::kNone;
  }

  // After a hop ended with `code`: true when the transfer goes on to the
  // address its 3xx answer named, with the handle pointed there. A hop past
  // maxRedirects, or from https to anything else, is refused instead (Finish()
  // then fails the transfer).
  bool FollowRedirect(CURLcode code) {
    if (code != CURLE_OK || request.maxRedirects <= 0 || request.method != "GET") return false;
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    char* next = nullptr;
    if (!IsRedirectStatus(status) || curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &next) != CURLE_OK ||
        next == nullptr) {
      return false;
    }
    char* current = nullptr;
    curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &current);
    if (redirects >= request.maxRedirects) {
      redirect_refusal = "More than " + std::to_string(request.maxRedirects) + " redirects.";
      return false;
    }
    if (current != nullptr && IsHttpsAddress(current) && !IsHttpsAddress(next)) {
      redirect_refusal = "A redirect from https to another scheme was refused.";
      return false;
    }
    ++redirects;
    curl_easy_setopt(easy, CURLOPT_URL, next);  // copied by libcurl
    body.clear();
    response_headers.clear();
    return true;
  }

  HttpOutcome Finish(CURLcode code) {
    HttpOutcome outcome;
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    if (status != 0) {
      HttpResponse response;
      response.statusCode = static_cast<int>(status);
      char* url = nullptr;
      if (curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &url) == CURLE_OK && url != nullptr) response.url = url;
      response.headers = std::move(response_headers);
      outcome.response = std::move(response);
    }
    if (!redirect_refusal.empty()) {
      outcome.error = TransportError::kRedirectRefused;
      outcome.errorDescription = redirect_refusal;
    } else if (code == CURLE_OK) {
      outcome.body = std::move(body);
    } else {
      outcome.error = too_large ? TransportError::kResponseTooLarge : ErrorFor(code);
      outcome.errorDescription = error[0] != '\0' ? error : curl_easy_strerror(code);
    }
    return outcome;
  }
};

struct CurlHttpSession::Core {
  Core() {
    // Each transfer has an easy handle of its own, and libcurl keeps TLS
    // sessions per easy handle: without this share, every new connection
    // (the server closed the last one) would make a full handshake instead
    // of resuming. Only the session's thread uses the share, so it needs no
    // lock callbacks.
    if (share != nullptr) curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    LimitConnectionsPerHost(multi);
  }

  // A request may reuse a connection idle for under a minute when it starts
  // while nothing else runs: every connection is idle then, and those the
  // server closed meanwhile are retired first (CurlConnectionSockets). A
  // reader who reads for half a minute and then taps saves the new
  // connection's TCP and TLS round trips whenever the server still keeps the
  // connection (75 s is nginx's default). Past a minute, a middlebox that
  // dropped the connection without a word becomes likely, and the request
  // would wait out its timeout. What stays is a server closing the
  // connection while the request is on its way: that request fails, as any
  // answer lost on the way does, and is not sent again.
  static constexpr long kCheckedIdleSeconds = 59;
  // A request that starts while others run is not checked that way (their
  // connections have bytes arriving), so it takes only a connection idle
  // under 4 s, within the 5 s common servers keep one.
  static constexpr long kUncheckedIdleSeconds = 3;
  // The transfers' easy handles are gone by now: the thread cleans them up
  // before it ends.
  ~Core() {
    for (CURL* easy : idle_easy) curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
    curl_share_cleanup(share);
  }

  // Transfers beyond kMaxHostConnections to one host wait inside libcurl for
  // a connection to come free, then reuse it, as a phone's URL session does.
  // Without a limit, 1000 paywalls opened at once would open 1000 connections
  // (each a TLS handshake on both ends, and a server worker held for the
  // keep-alive time). The wait counts toward the transfer's timeout.
  static void LimitConnectionsPerHost(CURLM* multi) {
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(kMaxHostConnections));
  }

  // A finished transfer's easy handle, reset, for the next transfer: making
  // and destroying one per transfer costs more than setting all its options.
  // The connections and TLS sessions live in the multi handle and the share,
  // not here, so a kept handle carries nothing from one transfer to the next.
  // Session thread only.
  void KeepEasy(CURL* easy) {
    if (easy == nullptr) return;
    curl_easy_reset(easy);
    if (idle_easy.size() < kIdleEasyHandles) {
      idle_easy.push_back(easy);
    } else {
      curl_easy_cleanup(easy);
    }
  }
  CURL* TakeEasy() {
    if (idle_easy.empty()) return nullptr;
    CURL* easy = idle_easy.back();
    idle_easy.pop_back();
    return easy;
  }

  static constexpr std::size_t kIdleEasyHandles = 8;
  static constexpr int kMaxHostConnections = 6;

  std::mutex mutex;
  std::deque<std::unique_ptr<Transfer>> incoming;  // guarded by mutex
  bool stopping = false;                           // guarded by mutex
  CURLM* multi = curl_multi_init();
  CURLSH* share = curl_share_init();
  std::vector<CURL*> idle_easy;   // session thread only
  CurlConnectionSockets sockets;  // session thread only; outlives the multi handle's connections
};

CurlHttpSession::CurlHttpSession() {
  GlobalInitOnce();
  core_ = std::make_shared<Core>();
  thread_ = std::thread(&CurlHttpSession::Run, core_);
  std::lock_guard<std::mutex> lock(Live().mutex);
  Live().sessions.push_back(this);
}

CurlHttpSession::~CurlHttpSession() {
  {
    std::lock_guard<std::mutex> lock(Live().mutex);
    std::erase(Live().sessions, this);
  }
  Stop();
}

void CurlHttpSession::Stop() {
  {
    std::lock_guard<std::mutex> lock(core_->mutex);
    core_->stopping = true;
  }
  curl_multi_wakeup(core_->multi);
  if (!thread_.joinable()) return;  // stopped already, at exit
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();  // released inside a completion handler; the thread ends by itself
  } else {
    thread_.join();
  }
}

void CurlHttpSession::StopAllAtExit() {
  std::lock_guard<std::mutex> lock(Live().mutex);
  for (CurlHttpSession* session : Live().sessions) session->Stop();
}

void CurlHttpSession::dataTask(HttpRequest request, CompletionHandler handler) {
  auto transfer = std::make_unique<Transfer>();
  transfer->request = std::move(request);
  transfer->handler = std::move(handler);
  {
    std::lock_guard<std::mutex> lock(core_->mutex);
    core_->incoming.push_back(std::move(transfer));
  }
  curl_multi_wakeup(core_->multi);
}

void CurlHttpSession::Run(std::shared_ptr<Core> core) {
  on_session_thread = true;
  CURLM* multi = core->multi;
  std::vector<std::unique_ptr<Transfer>> running;
  std::vector<std::pair<Transfer*, CURLcode>> done;  // ended in one turn, foreground first

  auto complete = [&](Transfer* transfer, HttpOutcome outcome) {
    CompletionHandler handler = std::move(transfer->handler);
    core->KeepEasy(std::exchange(transfer->easy, nullptr));  // out of the multi handle by now
    std::erase_if(running, [&](const auto& owned) { return owned.get() == transfer; });
    if (handler) handler(std::move(outcome));
  };

  for (;;) {
    std::deque<std::unique_ptr<Transfer>> arrived;
    {
      std::lock_guard<std::mutex> lock(core->mutex);
      if (core->stopping) break;
      arrived.swap(core->incoming);
    }
    std::stable_partition(arrived.begin(), arrived.end(),
                          [](const auto& transfer) { return !transfer->request.background; });
    const bool checked = running.empty() && !arrived.empty();
    if (checked) core->sockets.retireClosed();
    for (auto& transfer : arrived) {
      Transfer* raw = transfer.get();
      raw->share = core->share;
      raw->sockets = &core->sockets;
      raw->max_idle_seconds = checked ? Core::kCheckedIdleSeconds : Core::kUncheckedIdleSeconds;
      raw->easy = core->TakeEasy();
      running.push_back(std::move(transfer));
      TransportError refused = raw->Prepare();
      if (refused == TransportError::kNone && curl_multi_add_handle(multi, raw->easy) != CURLM_OK) {
        refused = TransportError::kOther;
      }
      if (refused != TransportError::kNone) {
        HttpOutcome outcome;
        outcome.error = refused;
        outcome.errorDescription = refused == TransportError::kInvalidHeader
                                       ? "A header field holds a line break or NUL; nothing was sent."
                                       : "The transfer could not be started.";
        complete(raw, std::move(outcome));
      }
    }

    int still_running = 0;
    curl_multi_perform(multi, &still_running);
    int queued = 0;
    done.clear();
    while (CURLMsg* message = curl_multi_info_read(multi, &queued)) {
      if (message->msg != CURLMSG_DONE) continue;
      Transfer* transfer = nullptr;
      curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
      done.emplace_back(transfer, message->data.result);
    }
    std::stable_partition(done.begin(), done.end(),
                          [](const auto& ended) { return !ended.first->request.background; });
    for (auto [transfer, code] : done) {
      curl_multi_remove_handle(multi, transfer->easy);
      if (transfer->FollowRedirect(code)) {
        if (curl_multi_add_handle(multi, transfer->easy) == CURLM_OK) continue;
        code = CURLE_FAILED_INIT;  // the next hop could not start: a failure, not the last hop's answer
      }
      HttpOutcome outcome = transfer->Finish(code);
      complete(transfer, std::move(outcome));
    }
    curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
  }

  for (auto& transfer : running) {
    if (transfer->easy != nullptr) curl_multi_remove_handle(multi, transfer->easy);
  }
}

}  // namespace obolo
