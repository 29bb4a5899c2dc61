#include "network/network_manager.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "entry/global_variable.h"
#include "network/api.h"
#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/url.h"

namespace obolo {
namespace {

// The two create-bid calls send their Content-Type in lower case, the other
// five with a capital A. The service has always been sent these exact texts.
constexpr std::string_view kCreateBidContentType = "application/json";
constexpr std::string_view kContentType = "Application/json";
constexpr std::string_view kAccept = "application/json";

// The largest answer the kit takes from the service. Its largest real answer,
// a balance with a page of recommendations, is tens of kilobytes and a full
// bid a few; 1 MiB leaves ample room while keeping a hostile or broken answer
// from costing more memory than a phone can spare.
constexpr std::size_t kMaxAnswerBytes = 1024 * 1024;
// onFailure's text for an answer past kMaxAnswerBytes, in the decoder's words.
constexpr char kAnswerTooLarge[] = "The data couldn't be read because it is too large.";

// Answers that can carry a session (tokens, device key) are logged as
// credentials, so a host can keep them out of its logs.
template <class Envelope>
constexpr LogContent kEnvelopeContent =
    std::is_same_v<Envelope, OboloData> || std::is_same_v<Envelope, NextTokenData> ? LogContent::kCredential
                                                                                 : LogContent::kDiagnostic;

// The calls carry the reader's keys and tokens, so they go out over HTTPS only.
// An address override that names anything else (a sandbox address typed with
// http://, say) makes every call an invalid address: nothing is sent and no
// closure runs, and the log says why.
std::string Address(std::string_view path) {
  const std::string& base = API::BASE_URL();
  if (base.size() < 8 || !std::equal(base.begin(), base.begin() + 8, "https://", [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == b;
      })) {
    LogLine("Not sent: the service address is not an https address: " + base);
    return {};
  }
  return base + std::string(path);
}

HttpRequest MakeRequest(std::string url, std::string_view method, std::string_view contentType) {
  HttpRequest request;
  request.url = std::move(url);
  request.method = std::string(method);
  request.timeout = std::chrono::seconds(60);
  // A 3xx answer is the service's answer: following it would hand the body
  // (keys, tokens, a payment) to whatever address the answer names.
  request.maxRedirects = 0;
  request.maxBodyBytes = kMaxAnswerBytes;
  request.setValue(contentType, "Content-Type");
  return request;
}

// A header value that would break its line (a stored token holding CR LF,
// from an answer or a host) is never sent: the call ends here, like one with
// an invalid address, with one line that names the field but not its value.
bool CanBeSent(const HttpRequest& request) {
  for (const auto& [name, value] : request.headers) {
    if (!IsSendableHeaderField(name, value)) {
      LogLine("Not sent: the " + name + " header holds a line break or NUL");
      return false;
    }
  }
  return true;
}

void SetBearer(HttpRequest& request) {
  request.setValue("Bearer " + GlobalVariable::shared().getAccessToken(), "Authorization");
}

enum class SuccessRule { kIgnore, kRequireSuccess };

// Sends the request and runs the response handler on the session's thread.
template <class Envelope>
void Send(HttpRequest request, SuccessRule rule, Completion<Envelope> completion, OnFailure onFailure) {
  if (!CanBeSent(request)) return;
  HttpSession::shared()->dataTask(
      std::move(request), [rule, completion = std::move(completion),
                           onFailure = std::move(onFailure)](HttpOutcome outcome) {
        if (outcome.response) LogLine(outcome.response->url);
        if (outcome.error == TransportError::kResponseTooLarge) {
          if (onFailure) onFailure(kAnswerTooLarge);
          return;
        }
        if (!outcome.body) return;
        auto decoded = DecodeRecordInPlace<Envelope>(*outcome.body);
        if (!decoded) {
          if (onFailure) onFailure(decoded.error());
          return;
        }
        Envelope envelope = std::move(decoded).value();
        // The description spells out the whole answer; it is built only for a
        // sink that keeps the line.
        if (LogLineWanted(kEnvelopeContent<Envelope>)) LogLine(DescribeRecord(envelope), kEnvelopeContent<Envelope>);
        if (rule == SuccessRule::kRequireSuccess && envelope.success != true) {
          if (onFailure) onFailure(envelope.message.value_or(""));
          return;
        }
        if (completion) completion(std::move(envelope));
      });
}

// The five calls that build their body first and log it after the address.
struct PlainCall {
  std::string_view name;       // for the "started" line
  std::string_view urlPrefix;  // the text before the address
  std::string_view path;
  std::string_view method;
  bool bearer;
  LogContent bodyContent;
};

template <class Envelope, class Param>
void IssuePlain(const PlainCall& call, const Param& param, bool logRecordName, Completion<Envelope> completion,
                OnFailure onFailure) {
  LogLine(std::string(call.name) + " started");
  const BodyMap body = param.bodyMap();
  std::string url = Address(call.path);
  if (!IsValidUrl(url)) return;
  LogLine(std::string(call.urlPrefix) + url);
  if (logRecordName) {
    LogLine(ModuleQualifiedName(Param::kTypeName));
  } else if (LogLineWanted(call.bodyContent)) {  // a description costs more than the call's other work
    LogLine(body.description(), call.bodyContent);
  }
  HttpRequest request = MakeRequest(std::move(url), call.method, kContentType);
  request.addValue(kAccept, "Accept");
  if (call.bearer) SetBearer(request);
  request.body = body.json();
  Send<Envelope>(std::move(request), SuccessRule::kIgnore, std::move(completion), std::move(onFailure));
}

}  // namespace

NetworkManager& NetworkManager::shared() {
  static NetworkManager* const instance = new NetworkManager();  // lives until exit
  return *instance;
}

BodyMap NetworkManager::getCreateLoggedParams(const CreateLoggedBidParam& param) const { return param.bodyMap(); }

void NetworkManager::createLoggedOutBid(const CreateLoggedBidParam& param, Completion<OboloData> completion,
                                        OnFailure onFailure) const {
  LogLine("createLoggedOutBid started");
  std::string url = Address(API::V2::CREATE_LOGGED_OUT_BID);
  if (!IsValidUrl(url)) return;
  LogLine("createLoggedOutBid Url: " + url);
  LogLine(ModuleQualifiedName(CreateLoggedBidParam::kTypeName));
  HttpRequest request = MakeRequest(std::move(url), "POST", kCreateBidContentType);
  request.addValue(kAccept, "Accept");
  request.body = getCreateLoggedParams(param).json();
  Send<OboloData>(std::move(request), SuccessRule::kIgnore, std::move(completion), std::move(onFailure));
}

void NetworkManager::createLoggedInBid(const CreateLoggedBidParam& param, Completion<OboloData> completion,
                                       OnFailure onFailure) const {
  LogLine("createLoggedInBid started");
  std::string url = Address(API::V2::CREATE_LOGGED_IN_BID);
  if (!IsValidUrl(url)) return;
  HttpRequest request = MakeRequest(url, "POST", kCreateBidContentType);
  SetBearer(request);
  // Checked before the token is written out, so an unsendable one never
  // reaches the log either.
  if (!CanBeSent(request)) return;
  request.body = getCreateLoggedParams(param).json();
  LogLine(url);
  LogLine("Access Token: " + GlobalVariable::shared().getAccessToken(), LogContent::kCredential);
  if (LogLineWanted()) LogLine(getCreateLoggedParams(param).description());
  Send<OboloData>(std::move(request), SuccessRule::kRequireSuccess, std::move(completion), std::move(onFailure));
}

void NetworkManager::customerBid(const CustomerBidParam& param, Completion<OboloData> completion,
                                 OnFailure onFailure) const {
  IssuePlain<OboloData>({"customerBid", "CustomerBidData Url: ", API::V2::CUSTOMER_BID, "POST", false,
                         LogContent::kCredential},
                        param, /*logRecordName=*/true, std::move(completion), std::move(onFailure));
}

void NetworkManager::getNextAccessToken(const NextTokenParam& param, Completion<NextTokenData> completion,
                                        OnFailure onFailure) const {
  IssuePlain<NextTokenData>({"getNextAccessToken", "getNextAccessToken Url: ", API::V1::NEXT_ACCESS_TOKEN, "PUT",
                             false, LogContent::kCredential},
                            param, false, std::move(completion), std::move(onFailure));
}

void NetworkManager::acceptBid(const AcceptBidParam& param, Completion<OboloData> completion,
                               OnFailure onFailure) const {
  IssuePlain<OboloData>({"acceptBid", "Url: ", API::V2::ACCEPT_BID, "PUT", true, LogContent::kDiagnostic}, param,
                        false, std::move(completion), std::move(onFailure));
}

void NetworkManager::getBalanceAndArticles(const BalanceAndArticleParam& param,
                                           Completion<BalanceAndArticleData> completion,
                                           OnFailure onFailure) const {
  IssuePlain<BalanceAndArticleData>(
      {"getBalanceAndArticles", "Url: ", API::V2::BALANCE_ARTICLE, "POST", true, LogContent::kDiagnostic}, param,
      false, std::move(completion), std::move(onFailure));
}

void NetworkManager::logout(const LogoutParam& param, Completion<LogoutData> completion,
                            OnFailure onFailure) const {
  IssuePlain<LogoutData>({"logout", "Url: ", API::V1::LOGOUT, "PUT", true, LogContent::kCredential}, param, false,
                         std::move(completion), std::move(onFailure));
}

}  // namespace obolo
