// The wallet site's side of a login: the pages, the logo, and the two JSON
// calls behind the login page.
//
//   POST /sandbox/login/code    {"email"}          -> {success, message, code}
//   POST /sandbox/login/verify  {"email", "code"}  -> {success, message, deviceKey, loginKey}
//
// An unknown e-mail gets HTTP 404 and a wrong code HTTP 401, each with the
// envelope {success:false, message, statusCode}. A code works once.
// Thread-safe, as the world is.

#ifndef OBOLO_SANDBOX_LOGIN_SERVICE_H_
#define OBOLO_SANDBOX_LOGIN_SERVICE_H_

#include "sandbox/answer.h"
#include "sandbox/world.h"

namespace obolo::sandbox {

class LoginService {
 public:
  // `world` must outlive the service.
  explicit LoginService(World& world);

  Answer requestCode(const Call& call);
  Answer verifyCode(const Call& call);

  static Answer LoginPage();
  static Answer WindowModePage();
  static Answer PublisherLogo();  // PNG
  static Answer PublisherLogoJpeg();
  static Answer PublisherLogoWebp();
  static Answer PublisherLogoGif();

 private:
  World& world_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_LOGIN_SERVICE_H_
