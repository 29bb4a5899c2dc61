#include "sandbox/login_service.h"

#include "sandbox/login_pages.h"
#include "sandbox/publisher_logo.h"
#include "sandbox/request_body.h"

namespace obolo::sandbox {
namespace {

Answer Refusal(const ApiError& error) {
  return Answer::FromJson(error.status, ErrorEnvelope(error.status, error.message));
}

}  // namespace

LoginService::LoginService(World& world) : world_(world) {}

Answer LoginService::requestCode(const Call& call) {
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::string email = body.value().text("email");
  if (body.value().error()) return Refusal(*body.value().error());
  if (email.empty()) return Refusal({400, "Please enter your e-mail address"});
  auto code = world_.issueOneTimeCode(email);
  if (!code.ok()) return Refusal(code.error());
  Json json;
  json["success"] = true;
  json["message"] = "A one-time code was issued";
  json["code"] = code.value();
  return Answer::FromJson(200, json);
}

Answer LoginService::verifyCode(const Call& call) {
  auto body = RequestBody::Parse(call.body);
  if (!body.ok()) return Refusal(body.error());
  const std::string email = body.value().text("email");
  const std::string code = body.value().text("code");
  if (body.value().error()) return Refusal(*body.value().error());
  auto keys = world_.verifyOneTimeCode(email, code);
  if (!keys.ok()) return Refusal(keys.error());
  Json json;
  json["success"] = true;
  json["message"] = "Logged in";
  json["deviceKey"] = keys.value().deviceKey;
  json["loginKey"] = keys.value().loginKey;
  return Answer::FromJson(200, json);
}

Answer LoginService::LoginPage() { return Answer{200, "text/html; charset=utf-8", LoginPageHtml()}; }

Answer LoginService::WindowModePage() {
  return Answer{200, "text/html; charset=utf-8", WindowModePageHtml()};
}

Answer LoginService::PublisherLogo() { return Answer{200, "image/png", PublisherLogoPng()}; }
Answer LoginService::PublisherLogoJpeg() { return Answer{200, "image/jpeg", sandbox::PublisherLogoJpeg()}; }
Answer LoginService::PublisherLogoWebp() { return Answer{200, "image/webp", sandbox::PublisherLogoWebp()}; }
Answer LoginService::PublisherLogoGif() { return Answer{200, "image/gif", sandbox::PublisherLogoGif()}; }

}  // namespace obolo::sandbox
