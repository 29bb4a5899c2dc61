// Load: 100 paywalls on one host screen, all talking to the sandbox at once,
// over ten articles of two publishers, in three waves of readers: logged out,
// logged in, and logged in with an expired token (refreshed on the way). Each
// paywall must reach the decision its own article calls for, keep its own bid
// and show its own article's texts.
//
// A paywall sends each bid with the configuration in force when the bid goes
// out: the bid that follows a token refresh takes the host's latest Obolo. The
// refreshing wave therefore opens last, all on one article, as a host opening
// one article screen after another would.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "entry/obolo.h"
#include "network/network_manager.h"
#include "platform/notification_center.h"
#include "reliability/screen_fault_test.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "sandbox/price_format.h"
#include "wallet/logout_controller.h"
#include "support/call_probe.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::PaywallLook;
using testing::CallProbe;
using testing::PaywallHost;
namespace seed = sandbox::seed;

constexpr int kPaywalls = 100;
constexpr int kLoggedOutWave = 40;       // paywalls 0..39, over every article
constexpr int kLoggedInWave = 30;        // paywalls 40..69, over every article
constexpr int kExpiredTokenWave = 30;    // paywalls 70..99, all on the first article
constexpr char kCurrency[] = "EUR";

const sandbox::Publisher kGazette{8, "gazette-access-key", "gazette.example", "The Evening Gazette", kCurrency};

struct LoadArticle {
  sandbox::Article article;
  bool ownedByReader = false;  // bought before the paywalls load
};

sandbox::Article MakeArticle(std::int64_t id, std::int64_t publisherId, std::string slug, std::string title,
                             double price, std::string mode = sandbox::kNormalMode, bool enabled = true,
                             bool active = true) {
  sandbox::Article article;
  article.id = id;
  article.publisherId = publisherId;
  article.url = "https://load.example/" + slug;
  article.title = std::move(title);
  article.category = seed::kCategory;
  article.price = price;
  article.priceInLocalCurrency = price;
  article.currency = kCurrency;
  article.transactionMode = std::move(mode);
  article.paywallEnabledInCountry = enabled;
  article.active = active;
  return article;
}

std::vector<LoadArticle> Articles() {
  const std::int64_t times = seed::kPublisherId;
  const std::int64_t gazette = kGazette.id;
  return {
      {MakeArticle(9001, times, "harbour-cranes", "Harbour cranes return to the old docks", 0.30)},
      {MakeArticle(9002, times, "night-trains", "Night trains: a comeback in numbers", 0.40)},
      {MakeArticle(9003, times, "five-things", "Five things to know this morning", 0.15, sandbox::kInstantMode),
       true},
      {MakeArticle(9004, times, "free-weather", "Rain until Sunday", 0.10, sandbox::kNormalMode, false)},
      {MakeArticle(9005, times, "old-archive", "From the 1998 archive", 0.10, sandbox::kNormalMode, true, false)},
      {MakeArticle(9006, times, "long-read", "The long read: who owns the river", 30.0)},
      {MakeArticle(9101, gazette, "bridge", "The bridge that never opened", 0.35)},
      {MakeArticle(9102, gazette, "evening-headlines", "Evening headlines", 0.25, sandbox::kInstantMode), true},
      {MakeArticle(9103, gazette, "chess", "A chess prodigy at nine", 0.45)},
      {MakeArticle(9104, gazette, "retired-column", "A column that ended", 0.20, sandbox::kNormalMode, true, false)},
  };
}

enum class Decision { kHidden, kCard, kCardWithoutUnlock, kRevealed };

const char* Name(Decision decision) {
  switch (decision) {
    case Decision::kHidden:
      return "hidden";
    case Decision::kCard:
      return "card";
    case Decision::kCardWithoutUnlock:
      return "card without unlock";
    case Decision::kRevealed:
      return "revealed";
  }
  return "?";
}

// What the paywall must decide for the article and reader, from the world
// the test built.
Decision Expected(const LoadArticle& entry, bool loggedIn, double balance) {
  const sandbox::Article& article = entry.article;
  if (!article.paywallEnabledInCountry || !article.active) return Decision::kHidden;
  if (!loggedIn) return Decision::kCard;  // no wallet yet: the unlock leads to the login
  if (entry.ownedByReader && article.transactionMode != sandbox::kNormalMode) return Decision::kRevealed;
  return balance < article.priceInLocalCurrency ? Decision::kCardWithoutUnlock : Decision::kCard;
}

struct Loaded {
  const LoadArticle* entry;
  bool loggedIn;
  std::shared_ptr<PaywallVC> paywall;
};

class LoadTest : public reliability::ScreenFaultTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(sandbox_.addPublisher(kGazette));
    for (const LoadArticle& entry : articles_) ASSERT_TRUE(sandbox_.addArticle(entry.article));
    // The reader already owns the two instant articles.
    const auto owner = sandbox_.createSession(seed::kReaderEmail).value();
    reliability::StoreSession(owner);
    for (const LoadArticle& entry : articles_) {
      if (entry.ownedByReader) Buy(entry.article, owner.customerId);
    }
    GlobalVariable::shared().logout();
    sandbox_.clearRequests();
  }

  void Buy(const sandbox::Article& article, std::int64_t customerId) {
    CreateLoggedBidParam param;
    param.articleUrl = article.url;
    param.category = article.category;
    param.publisherDomain = Domain(article);
    param.accessKey = AccessKey(article);
    param.customerId = customerId;
    CallProbe<OboloData> bid;
    NetworkManager::shared().createLoggedInBid(param, bid.completion(), bid.onFailure());
    ASSERT_TRUE(bid.wait());
    ASSERT_TRUE(bid.envelope() && bid.envelope()->data) << bid.failure().value_or("");
    AcceptBidParam accept;
    accept.oboloBidId = bid.envelope()->data->oboloBidId.value();
    accept.oboloTransactionMode = article.transactionMode;
    CallProbe<OboloData> accepted;
    NetworkManager::shared().acceptBid(accept, accepted.completion(), accepted.onFailure());
    ASSERT_TRUE(accepted.wait());
    ASSERT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, article.url));
  }

  static std::string Domain(const sandbox::Article& article) {
    return article.publisherId == kGazette.id ? kGazette.domain : seed::kPublisherDomain;
  }
  static std::string AccessKey(const sandbox::Article& article) {
    return article.publisherId == kGazette.id ? kGazette.accessKey : seed::kPublisherAccessKey;
  }

  // The host app opens article `index` the way a host does: a new Obolo, then
  // the paywall over the content view or the whole screen.
  void Open(int index, bool loggedIn, std::optional<std::size_t> article = std::nullopt) {
    const LoadArticle& entry = articles_[article.value_or(index % articles_.size())];
    Obolo obolo(AccessKey(entry.article), entry.article.category, sandbox_.logoUrl(), entry.article.url,
                "load-reader-" + std::to_string(index), Domain(entry.article));
    if (index % 4 == 3) {
      obolo.loadPaywall(host_.host);
    } else {
      obolo.loadPaywall(host_.host, host_.content, static_cast<Position>(index % 3));
    }
    auto paywall = std::dynamic_pointer_cast<PaywallVC>(host_.host->children().back());
    ASSERT_NE(paywall, nullptr);
    loaded_.push_back({&entry, loggedIn, paywall});
  }

  const std::vector<LoadArticle> articles_ = Articles();
  PaywallHost host_{seed::kNormalArticleUrl};
  std::vector<Loaded> loaded_;
};

TEST_F(LoadTest, AHundredPaywallsAtOnceEachReachTheirOwnArticlesDecision) {
  double balance = seed::kReaderBalance;
  for (const LoadArticle& entry : articles_) {
    if (entry.ownedByReader) balance -= entry.article.priceInLocalCurrency;
  }
  const std::size_t from = TransfersSoFar();

  for (int i = 0; i < kLoggedOutWave; ++i) Open(i, false);
  // The reader logs in elsewhere.
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  for (int i = kLoggedOutWave; i < kLoggedOutWave + kLoggedInWave; ++i) Open(i, true);
  // The stored access token has expired by the time the last wave opens, so
  // its paywalls refresh it first.
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail, -1min, 1h).value());
  for (int i = kLoggedOutWave + kLoggedInWave; i < kPaywalls; ++i) Open(i, true, 0);
  ASSERT_EQ(loaded_.size(), static_cast<std::size_t>(kPaywalls));

  Settle(std::chrono::seconds(90));

  std::set<std::int64_t> bids;
  std::map<std::string, int> expectedLoggedOut, expectedLoggedIn;
  int shown = 0, revealed = 0;
  for (std::size_t i = 0; i < loaded_.size(); ++i) {
    const Loaded& item = loaded_[i];
    const sandbox::Article& article = item.entry->article;
    const Decision decision = Expected(*item.entry, item.loggedIn, balance);
    SCOPED_TRACE("paywall " + std::to_string(i) + ", " + article.url + ", " +
                 (item.loggedIn ? "logged in" : "logged out") + ", expected " + Name(decision));
    ++(item.loggedIn ? expectedLoggedIn : expectedLoggedOut)[article.url];
    const PaywallLook look = PaywallLook::Of(*item.paywall, host_);

    if (decision == Decision::kHidden) {
      EXPECT_TRUE(look.readable()) << ::testing::PrintToString(look);
      EXPECT_EQ(look.bidId, 0);
      continue;
    }
    if (decision == Decision::kRevealed) {
      ++revealed;
      EXPECT_TRUE(look.paywallShown && !look.cardShown && look.splashShown) << ::testing::PrintToString(look);
    } else {
      ++shown;
      EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
      EXPECT_EQ(look.unlockShown, decision == Decision::kCard);
    }
    // Its own bid, made for its own article and reader.
    ASSERT_NE(look.bidId, 0);
    EXPECT_TRUE(bids.insert(look.bidId).second) << "bid " << look.bidId << " kept by two paywalls";
    const auto bid = sandbox_.bid(look.bidId);
    ASSERT_TRUE(bid.has_value());
    EXPECT_EQ(bid->articleId, article.id);
    EXPECT_EQ(bid->publisherId, article.publisherId);
    EXPECT_EQ(bid->customerId, item.loggedIn ? std::optional<std::int64_t>(seed::kReaderId) : std::nullopt);
    EXPECT_EQ(item.paywall->transactionMode, article.transactionMode);
    // Its own article's texts.
    const std::string price = sandbox::FormatPrice(article.priceInLocalCurrency, kCurrency);
    EXPECT_NE(look.prompt.find(article.title), std::string::npos) << look.prompt;
    EXPECT_NE(look.prompt.find(article.publisherId == kGazette.id ? kGazette.name : seed::kPublisherName),
              std::string::npos)
        << look.prompt;
    EXPECT_EQ(look.price, price);
    EXPECT_EQ(item.paywall->btnUnlock->title(UIControlState::normal), "Unlock for " + price);
  }
  EXPECT_EQ(shown, 73);
  EXPECT_EQ(revealed, 6);

  // One bid per paywall: none lost, none doubled, each for its article.
  std::map<std::string, int> loggedOutBids, loggedInBids;
  int refreshes = 0;
  for (const auto& request : sandbox_.requests()) {
    if (request.path == sandbox::kNextAccessTokenPath) ++refreshes;
    if (request.path != sandbox::kCreateLoggedOutBidPath && request.path != sandbox::kCreateLoggedInBidPath) {
      continue;
    }
    const auto body = nlohmann::json::parse(request.body);
    ++(request.path == sandbox::kCreateLoggedInBidPath ? loggedInBids : loggedOutBids)[body.value("articleUrl", "")];
  }
  EXPECT_EQ(loggedOutBids, expectedLoggedOut);
  EXPECT_EQ(loggedInBids, expectedLoggedIn);
  EXPECT_GE(refreshes, 1);
  EXPECT_LE(refreshes, kExpiredTokenWave);
  EXPECT_EQ(CallsSince(from).size(), static_cast<std::size_t>(kPaywalls + refreshes));

  // The reveals end; the cards stay.
  host_.advance(5100ms);
  for (const Loaded& item : loaded_) {
    const Decision decision = Expected(*item.entry, item.loggedIn, balance);
    const PaywallLook look = PaywallLook::Of(*item.paywall, host_);
    if (decision == Decision::kCard || decision == Decision::kCardWithoutUnlock) {
      EXPECT_TRUE(look.offersCard()) << item.entry->article.url;
    } else {
      EXPECT_TRUE(look.readable()) << item.entry->article.url;
    }
  }
  EXPECT_TRUE(host_.hasFloatingButtonOnScreen());
  std::printf("load: %d paywalls, %d cards, %d revealed, %d hidden, %d token refreshes\n", kPaywalls, shown,
              revealed, kPaywalls - shown - revealed, refreshes);
}

// The configuration is the kit's, not each paywall's: paywalls already on
// screen send their next bid with the configuration the host set last.
TEST_F(LoadTest, PaywallsOnScreenBidWithTheLatestConfiguration) {
  Open(0, false);
  Open(1, false);
  Settle();
  ASSERT_EQ(loaded_.size(), 2u);
  sandbox_.clearRequests();
  NotificationCenter::defaultCenter().post(kSessionEndedNotification);
  Settle();
  std::multiset<std::string> asked;
  for (const auto& request : sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath)) {
    asked.insert(nlohmann::json::parse(request.body).value("articleUrl", ""));
  }
  EXPECT_EQ(asked, (std::multiset<std::string>{articles_[1].article.url, articles_[1].article.url}));
}

}  // namespace
}  // namespace obolo
