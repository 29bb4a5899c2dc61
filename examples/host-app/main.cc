// host-app: a small host application built against an installed Obolo kit.
//
// It shows an article, lays the kit's paywall over it and plays one reader's
// purchase against the paywall service that the kit's environment variables
// name, normally a sandbox:
//
//   obolo-sandbox --port 8443        # prints the export lines to run:
//   export OBOLO_API_BASE_URL=...    # and OBOLO_CA_FILE, OBOLO_WALLET_ORIGIN,
//                                    # OBOLO_REDIRECT_ORIGIN, OBOLO_LOGIN_LOGO_URL
//   host-app [--verbose]
//
// The publisher, article and reader are the sandbox's seeded ones. Exit status
// 0 when the purchase completed, 1 when it did not, 2 without a service.

#include <obolo/entry/obolo.h>
#include <obolo/platform/bundle.h>
#include <obolo/platform/log.h>
#include <obolo/platform/main_loop.h>
#include <obolo/platform/preference_store.h>
#include <obolo/platform/sqlite_preference_store.h>
#include <obolo/toolkit/ui_label.h>
#include <obolo/toolkit/ui_window.h>
#include <obolo/toolkit/ui_window_scene.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "reader.h"

namespace {

// The sandbox's seeded publisher, article and reader.
constexpr char kAccessKey[] = "demo-access-key";
constexpr char kCategory[] = "politics";
constexpr char kArticleUrl[] = "https://news.example/politics/city-budget-vote";
constexpr char kArticleTitle[] = "City council approves the budget after a night of debate";
constexpr char kPublisherCustomerId[] = "example-times-reader-1";
constexpr char kPublisherDomain[] = "news.example";
constexpr char kReaderEmail[] = "reader@example.com";

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

int main(int argc, char** argv) {
  const bool verbose = argc > 1 && std::string(argv[1]) == "--verbose";
  const std::string service = Environment("OBOLO_API_BASE_URL");
  if (service.empty()) {
    std::cerr << "host-app: OBOLO_API_BASE_URL is not set. Start obolo-sandbox and run the export lines "
                 "it prints first.\n";
    return 2;
  }

  // The kit's diagnostic lines are the host's to route: here on standard
  // error with --verbose, never with tokens or keys in them, else nowhere.
  if (verbose) {
    obolo::SetLogSink(obolo::WithoutCredentials(
        [](std::string_view line, obolo::LogContent) { std::cerr << "  kit: " << line << "\n"; }));
  } else {
    obolo::SetLogSink(obolo::NullLogSink());
  }
  // A reader of its own for every run: the session lives in memory only. A
  // host that keeps the default store keeps the reader logged in across runs.
  obolo::PreferenceStore::setStandard(std::make_shared<obolo::SqlitePreferenceStore>(""));

  // The host's article screen: a window, a screen and the article's view.
  auto window = std::make_shared<obolo::UIWindow>(std::make_shared<obolo::UIWindowScene>());
  auto articleScreen = std::make_shared<obolo::UIViewController>();
  auto articleView = std::make_shared<obolo::UIView>(obolo::CGRect{{0, 100}, {390, 700}});
  auto article = std::make_shared<obolo::UILabel>(obolo::CGRect{{16, 16}, {358, 660}});
  article->setText(kArticleTitle);
  articleView->addSubview(article);
  articleScreen->view()->addSubview(articleView);
  window->setRootViewController(articleScreen);
  window->makeKeyAndVisible();

  std::cout << "host-app: the paywall over \"" << kArticleTitle << "\", service " << service << std::endl;
  {
    obolo::Obolo obolo(kAccessKey, kCategory, service + "/assets/publisher-logo.png", kArticleUrl,
                       kPublisherCustomerId, kPublisherDomain);
    obolo.loadPaywall(articleScreen, articleView, obolo::Position::bottom);
  }  // The host's screen owns the paywall from here on.

  std::string failure;
  const bool paid = host_app::PlayPurchase(articleScreen, kReaderEmail, failure);
  if (const auto bundle = obolo::Bundle::withIdentifier(obolo::Bundle::kKitIdentifier)) {
    std::cout << "  kit resources: " << bundle->bundlePath().string() << std::endl;
  }
  // Lets answers still on their way land before the process ends.
  obolo::MainLoop::main().runFor(std::chrono::milliseconds(50));
  obolo::PreferenceStore::setStandard(nullptr);
  if (!paid) {
    std::cout << "host-app: the purchase did not complete: " << failure << std::endl;
    return 1;
  }
  std::cout << "host-app: the purchase completed" << std::endl;
  return 0;
}
