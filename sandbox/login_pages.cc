#include "sandbox/login_pages.h"

namespace obolo::sandbox {

const std::string& LoginPageHtml() {
  static const std::string html = R"HTML(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Obolo wallet - log in</title>
<style>
  body { font-family: -apple-system, "Helvetica Neue", Arial, sans-serif; margin: 0; background: #f6f6f4; color: #212529; }
  main { max-width: 420px; margin: 0 auto; padding: 24px 20px; }
  header { display: flex; align-items: center; gap: 12px; margin-bottom: 16px; }
  header img { width: 48px; height: 48px; border-radius: 8px; }
  h1 { font-size: 1.3em; margin: 0; }
  p.context { color: #6c757d; font-size: 0.9em; margin: 4px 0 0; }
  form { background: #fff; border-radius: 10px; padding: 16px; margin: 12px 0; box-shadow: 0 1px 3px rgba(0,0,0,.12); }
  label { display: block; font-weight: 600; margin-bottom: 6px; }
  input { width: 100%; box-sizing: border-box; font-size: 1.05em; padding: 10px; border: 1px solid #ced4da; border-radius: 6px; }
  button { margin-top: 12px; width: 100%; font-size: 1.05em; padding: 11px; border: 0; border-radius: 6px; background: #f2a900; color: #212529; font-weight: 700; }
  button:disabled { opacity: .5; }
  .notice { background: #fff8e1; border-left: 4px solid #f2a900; padding: 10px 12px; border-radius: 4px; }
  .error { background: #fdecea; border-left: 4px solid #d93025; padding: 10px 12px; border-radius: 4px; }
  .done { background: #e6f4ea; border-left: 4px solid #1e8e3e; padding: 10px 12px; border-radius: 4px; word-break: break-all; }
  code { font-size: 1.3em; letter-spacing: .15em; }
  [hidden] { display: none !important; }
</style>
</head>
<body>
<main>
  <header>
    <img id="publisher-logo" alt="" hidden>
    <div>
      <h1>Log in to your Obolo wallet</h1>
      <p class="context" id="context"></p>
    </div>
  </header>

  <form id="email-form" novalidate>
    <label for="email">E-mail</label>
    <input id="email" name="email" type="email" autocomplete="email" required>
    <button id="send-code" type="submit">Send me a code</button>
  </form>

  <p class="notice" id="code-notice" hidden>This sandbox sends no e-mail. Your one-time code is
    <code id="code-shown"></code></p>

  <form id="code-form" novalidate hidden>
    <label for="code">One-time code</label>
    <input id="code" name="code" inputmode="numeric" autocomplete="one-time-code" required>
    <button id="verify" type="submit">Log in</button>
  </form>

  <p class="error" id="error" role="alert" hidden></p>
  <p class="done" id="done" role="status" hidden></p>
</main>
<script>
(function () {
  'use strict';
  var params = new URLSearchParams(window.location.search);
  var byId = function (id) { return document.getElementById(id); };

  var publisherId = params.get('login_publisher_id');
  var bidId = params.get('login_publisher_bid_id');
  if (publisherId || bidId) {
    byId('context').textContent = 'Publisher ' + (publisherId || '?') + ', bid ' + (bidId || '?');
  }
  // Only a logo served by this same site is shown: the page loads nothing
  // from elsewhere.
  var logo = params.get('login_publisher_logo_url');
  if (logo) {
    try {
      var logoUrl = new URL(logo, window.location.href);
      if (logoUrl.origin === window.location.origin) {
        byId('publisher-logo').src = logoUrl.href;
        byId('publisher-logo').hidden = false;
      }
    } catch (ignored) {}
  }

  function showError(text) {
    byId('error').textContent = text;
    byId('error').hidden = false;
  }
  function clearError() {
    byId('error').hidden = true;
    byId('error').textContent = '';
  }
  function post(path, body) {
    return fetch(path, {
      method: 'POST',
      headers: { 'Content-Type': 'application/json', 'Accept': 'application/json' },
      body: JSON.stringify(body)
    }).then(function (response) {
      return response.json().catch(function () { return { success: false, message: 'The wallet answered ' + response.status }; });
    }, function () {
      return { success: false, message: 'The wallet cannot be reached' };
    });
  }
  function handler() {
    return window.webkit && window.webkit.messageHandlers && window.webkit.messageHandlers.obHandler;
  }

  byId('email-form').addEventListener('submit', function (event) {
    event.preventDefault();
    clearError();
    var email = byId('email').value.trim();
    if (!email) { showError('Please enter your e-mail address.'); return; }
    byId('send-code').disabled = true;
    post('/sandbox/login/code', { email: email }).then(function (answer) {
      byId('send-code').disabled = false;
      if (!answer.success || typeof answer.code !== 'string') {
        showError(answer.message || 'No code could be sent.');
        return;
      }
      byId('code-shown').textContent = answer.code;
      byId('code-notice').hidden = false;
      byId('code-form').hidden = false;
      byId('code').focus();
    });
  });

  byId('code-form').addEventListener('submit', function (event) {
    event.preventDefault();
    clearError();
    var email = byId('email').value.trim();
    var code = byId('code').value.trim();
    if (!code) { showError('Please enter the code.'); return; }
    byId('verify').disabled = true;
    post('/sandbox/login/verify', { email: email, code: code }).then(function (answer) {
      byId('verify').disabled = false;
      if (!answer.success || typeof answer.deviceKey !== 'string' || typeof answer.loginKey !== 'string') {
        showError(answer.message || 'The code is not right.');
        return;
      }
      byId('email-form').hidden = true;
      byId('code-form').hidden = true;
      byId('code-notice').hidden = true;
      var message = { device_key: answer.deviceKey, login_key: answer.loginKey };
      var bridge = handler();
      if (bridge) {
        byId('done').textContent = 'You are logged in. Returning to the article\u2026';
        byId('done').hidden = false;
        bridge.postMessage(message);
      } else {
        byId('done').textContent = 'You are logged in. Device key: ' + message.device_key +
            ' - login key: ' + message.login_key;
        byId('done').hidden = false;
      }
    });
  });
})();
</script>
</body>
</html>
)HTML";
  return html;
}

const std::string& WindowModePageHtml() {
  static const std::string html = R"HTML(<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><title>Obolo</title></head>
<body><p>You can return to the article.</p></body>
</html>
)HTML";
  return html;
}

}  // namespace obolo::sandbox
