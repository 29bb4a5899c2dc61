// obolo-sandbox: runs the sandbox paywall service until SIGINT or SIGTERM and
// prints what a developer needs to point the kit at it.

#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "sandbox/command_line.h"
#include "sandbox/price_format.h"
#include "sandbox/sandbox.h"

namespace {

using obolo::sandbox::FormatPrice;
namespace seed = obolo::sandbox::seed;

std::string ShellQuoted(const std::string& text) {
  if (text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./:-=@%+,") ==
      std::string::npos) {
    return text;
  }
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

void PrintWelcome(const obolo::sandbox::Sandbox& sandbox) {
  const std::string base = sandbox.baseUrl();
  std::cout << "Obolo sandbox listening on " << base << "\n";
  if (!sandbox.caFile().empty()) std::cout << "CA certificate: " << sandbox.caFile() << "\n";
  std::cout << "\nPoint the kit at it:\n";
  std::cout << "export OBOLO_API_BASE_URL=" << ShellQuoted(base) << "\n";
  if (!sandbox.caFile().empty())
    std::cout << "export OBOLO_CA_FILE=" << ShellQuoted(sandbox.caFile()) << "\n";
  std::cout << "export OBOLO_WALLET_ORIGIN=" << ShellQuoted(base) << "\n";
  std::cout << "export OBOLO_REDIRECT_ORIGIN=" << ShellQuoted(base) << "\n";
  std::cout << "export OBOLO_LOGIN_LOGO_URL=" << ShellQuoted(sandbox.logoUrl()) << "\n";

  std::cout << "\nSeeded world:\n"
            << "  publisher  id " << seed::kPublisherId << ", access key " << seed::kPublisherAccessKey
            << ", domain " << seed::kPublisherDomain << " (" << seed::kPublisherName << ")\n"
            << "  article    " << seed::kNormalArticleUrl << "  normal mode, "
            << FormatPrice(seed::kNormalArticlePrice, seed::kCurrency) << "\n"
            << "  article    " << seed::kInstantArticleUrl << "  instant mode, "
            << FormatPrice(seed::kInstantArticlePrice, seed::kCurrency) << "\n"
            << "  article    " << seed::kFreeArticleUrl << "  paywall not enabled in the country\n"
            << "  article    " << seed::kInactiveArticleUrl << "  article not active\n"
            << "  article    " << seed::kExpensiveArticleUrl << "  normal mode, "
            << FormatPrice(seed::kExpensiveArticlePrice, seed::kCurrency) << "\n"
            << "  customer   " << seed::kReaderEmail << " (id " << seed::kReaderId << "), balance "
            << FormatPrice(seed::kReaderBalance, seed::kCurrency) << ", no credit\n"
            << "  customer   " << seed::kCreditReaderEmail << " (id " << seed::kCreditReaderId
            << "), balance " << FormatPrice(seed::kCreditReaderBalance, seed::kCurrency)
            << ", credit allowed\n";
  std::cout << "\nLogin page: " << sandbox.loginPageUrl(seed::kPublisherId, 0) << "\n"
            << "(the one-time code is shown on the page)\n\nStop with Ctrl-C." << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string program = argc > 0 ? argv[0] : "obolo-sandbox";
  auto command_line = obolo::sandbox::ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
  if (!command_line.error.empty()) {
    std::cerr << program << ": " << command_line.error << "\n\n" << obolo::sandbox::Usage(program);
    return 2;
  }
  if (command_line.help) {
    std::cout << obolo::sandbox::Usage(program);
    return 0;
  }

  // Block the stop signals before any thread starts, so every thread inherits
  // the mask and the main thread alone receives them through sigwait().
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGINT);
  sigaddset(&stop_signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

  obolo::sandbox::Sandbox sandbox(command_line.options);
  if (!sandbox.start()) {
    std::cerr << program << ": cannot start: " << sandbox.error() << "\n";
    return 1;
  }
  PrintWelcome(sandbox);

  int received = 0;
  sigwait(&stop_signals, &received);
  std::cout << "Stopping." << std::endl;
  sandbox.stop();
  return 0;
}
