// The sandbox's login page in a real headless browser, as the kit's web login
// screen uses it: a stand-in for the web view's "obHandler" script handler
// records what the page posts, and the keys it receives must complete a
// customer bid at the sandbox.
//
// Needs: OBOLO_SANDBOX_PROGRAM (the obolo-sandbox binary), OBOLO_CHROMIUM
// (Debian's chromium), and playwright-core from this directory's package.json.

import { after, before, test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import https from 'node:https';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

const READER = 'reader@example.com';
const PUBLISHER_DOMAIN = 'news.example';
const PUBLISHER_ID = 7;
const ARTICLE_URL = 'https://news.example/politics/city-budget-vote';

let sandbox;      // the obolo-sandbox child process
let exported;     // its printed export lines: name -> value
let ca;           // the sandbox's certificate, trusted by this process's requests
let context;      // the browser context
let userDataDir;

// Starts obolo-sandbox on a free port and reads its exports from standard output.
function startSandbox() {
  return new Promise((resolve, reject) => {
    const child = spawn(process.env.OBOLO_SANDBOX_PROGRAM, ['--port', '0'], { stdio: ['ignore', 'pipe', 'inherit'] });
    let output = '';
    const timer = setTimeout(() => reject(new Error(`obolo-sandbox did not start:\n${output}`)), 30_000);
    child.on('error', (error) => { clearTimeout(timer); reject(error); });
    child.on('exit', (code) => { clearTimeout(timer); reject(new Error(`obolo-sandbox exited with ${code}:\n${output}`)); });
    child.stdout.setEncoding('utf8');
    child.stdout.on('data', (chunk) => {
      output += chunk;
      if (!output.includes('Stop with Ctrl-C')) return;
      clearTimeout(timer);
      child.removeAllListeners('exit');
      const values = {};
      for (const match of output.matchAll(/^export (\w+)=(.*)$/gm)) values[match[1]] = match[2];
      resolve({ child, values });
    });
  });
}

function postJson(path, body) {
  return new Promise((resolve, reject) => {
    const data = JSON.stringify(body);
    const request = https.request(new URL(path, exported.OBOLO_API_BASE_URL), {
      method: 'POST',
      ca,
      headers: { 'Content-Type': 'application/json', 'Content-Length': Buffer.byteLength(data) },
    }, (response) => {
      let text = '';
      response.setEncoding('utf8');
      response.on('data', (chunk) => { text += chunk; });
      response.on('end', () => resolve({ status: response.statusCode, body: JSON.parse(text) }));
    });
    request.on('error', reject);
    request.end(data);
  });
}

// The address the kit's web login screen builds: five parameters, values as they are.
function loginAddress(bidId) {
  const base = exported.OBOLO_WALLET_ORIGIN;
  return `${base}/?login_source=ios_paywall&login_publisher_id=${PUBLISHER_ID}` +
    `&login_publisher_logo_url=${exported.OBOLO_LOGIN_LOGO_URL}` +
    `&login_publisher_bid_id=${bidId}` +
    `&login_redirect_url=${exported.OBOLO_REDIRECT_ORIGIN}/window-mode/index.html`;
}

async function newBid() {
  const answer = await postJson('/v2/obid/createLoggedOutBid', {
    articleUrl: ARTICLE_URL, category: 'politics', publisherDomain: PUBLISHER_DOMAIN,
    publisherCustomerId: 'browser-test', ipAddress: '0.0.0.0', userAgent: 'browser-test',
    isCustomerLoggedIn: false, isSIMEnabled: false,
  });
  assert.equal(answer.status, 200);
  assert.equal(typeof answer.body.data.oboloBidId, 'number');
  return answer.body.data.oboloBidId;
}

// Opens the login page with the stand-in handler installed before any of the
// page's scripts run.
async function openLoginPage(bidId) {
  const page = await context.newPage();
  await page.addInitScript(() => {
    window.__posted = [];
    window.webkit = {
      messageHandlers: {
        obHandler: {
          postMessage(message) {
            const isObject = message !== null && typeof message === 'object';
            window.__posted.push({
              keys: isObject ? Object.keys(message).sort() : [],
              types: isObject ? Object.values(message).map((value) => typeof value) : [typeof message],
              message: isObject ? { ...message } : message,
            });
          },
        },
      },
    };
  });
  const response = await page.goto(loginAddress(bidId));
  assert.equal(response.status(), 200);
  return page;
}

// Asks for a code for `email` and returns the code the page shows.
async function requestCode(page, email) {
  await page.fill('#email', email);
  await page.click('#send-code');
  await page.waitForSelector('#code-shown:not(:empty)', { state: 'attached', timeout: 15_000 });
  return (await page.textContent('#code-shown')).trim();
}

const posted = (page) => page.evaluate(() => window.__posted);

before(async () => {
  const started = await startSandbox();
  sandbox = started.child;
  exported = started.values;
  ca = readFileSync(exported.OBOLO_CA_FILE);
  userDataDir = mkdtempSync(join(tmpdir(), 'obolo-browser-'));
  context = await chromium.launchPersistentContext(userDataDir, {
    executablePath: process.env.OBOLO_CHROMIUM,
    headless: true,
    ignoreHTTPSErrors: true,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync',
      '--ignore-certificate-errors'],
  });
});

after(async () => {
  if (context) await context.close();
  if (userDataDir) rmSync(userDataDir, { recursive: true, force: true });
  if (sandbox && sandbox.exitCode === null) {
    const exited = new Promise((resolve) => sandbox.once('exit', resolve));
    sandbox.kill('SIGTERM');
    await exited;
  }
});

test('a login posts exactly the two keys as strings, and they complete a customer bid', { timeout: 90_000 }, async () => {
  const bidId = await newBid();
  const page = await openLoginPage(bidId);

  // The publisher's logo, served by the sandbox, loads as a real picture.
  await page.waitForFunction(() => {
    const logo = document.getElementById('publisher-logo');
    return logo && !logo.hidden && logo.complete && logo.naturalWidth > 0;
  }, null, { timeout: 15_000 });
  assert.equal(await page.evaluate(() => document.getElementById('publisher-logo').naturalWidth), 64);

  const code = await requestCode(page, READER);
  assert.match(code, /^[0-9]{6}$/);
  await page.fill('#code', code);
  await page.click('#verify');
  await page.waitForFunction(() => window.__posted.length > 0, null, { timeout: 15_000 });

  const messages = await posted(page);
  assert.equal(messages.length, 1);
  assert.deepEqual(messages[0].keys, ['device_key', 'login_key']);
  assert.deepEqual(messages[0].types, ['string', 'string']);
  const { device_key: deviceKey, login_key: loginKey } = messages[0].message;
  assert.ok(deviceKey.length > 0 && loginKey.length > 0);
  assert.equal(await page.isVisible('#done'), true);

  const answer = await postJson('/v2/obid/customerBid', { deviceKey, oboloBidId: bidId, loginToken: loginKey });
  assert.equal(answer.status, 200);
  assert.equal(answer.body.success, true);
  const info = answer.body.data.customerInfo;
  assert.equal(typeof info.accessToken, 'string');
  assert.ok(info.accessToken.split('.').length === 3);
  assert.equal(info.deviceKey, deviceKey);
  assert.equal(info.customer.email, READER);
  await page.close();
});

test('a wrong code shows an error and posts nothing', { timeout: 90_000 }, async () => {
  const page = await openLoginPage(await newBid());
  const code = await requestCode(page, READER);
  await page.fill('#code', code === '000000' ? '111111' : '000000');
  await page.click('#verify');
  await page.waitForSelector('#error', { state: 'visible', timeout: 15_000 });
  assert.notEqual((await page.textContent('#error')).trim(), '');
  assert.deepEqual(await posted(page), []);
  assert.equal(await page.isVisible('#done'), false);
  await page.close();
});

test('an unknown e-mail shows an error and posts nothing', { timeout: 90_000 }, async () => {
  const page = await openLoginPage(await newBid());
  await page.fill('#email', 'nobody@example.com');
  await page.click('#send-code');
  await page.waitForSelector('#error', { state: 'visible', timeout: 15_000 });
  assert.equal(await page.isVisible('#code-form'), false);
  assert.deepEqual(await posted(page), []);
  await page.close();
});
