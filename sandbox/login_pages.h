// The wallet site's pages as the sandbox serves them: the login page that the
// kit's web login screen loads, and the page its redirect address names.
//
// The login page needs nothing outside the sandbox: its script and style are
// inline, and it calls only the sandbox's own login endpoints. A reader enters
// an e-mail, asks for a one-time code (shown on the page, since a sandbox
// sends no mail), enters the code, and on success the page posts
// {device_key, login_key} to the web view's "obHandler" script handler. In a
// plain browser, without that handler, it shows the two keys instead.

#ifndef OBOLO_SANDBOX_LOGIN_PAGES_H_
#define OBOLO_SANDBOX_LOGIN_PAGES_H_

#include <string>

namespace obolo::sandbox {

const std::string& LoginPageHtml();
const std::string& WindowModePageHtml();

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_LOGIN_PAGES_H_
