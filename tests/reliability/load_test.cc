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
#include "reliability/reliability_support.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "sandbox/price_format.h"
#include "wallet/logout_controller.h"

OBOLO_USE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using namespace std::chrono_literals;
using reliability::PaywallLook;
namespace seed = sandbox::seed;

constexpr int kLoggedOutWave = 40;     // paywalls 0..39, over every article
constexpr int kLoggedInWave = 30;      // paywalls 40..69, over every article
constexpr int kExpiredTokenWave = 30;  // paywalls 70..99, all on the first article
constexpr int kPaywalls = kLoggedOutWave + kLoggedInWave + kExpiredTokenWave;

const sandbox::Publisher kGazette{8, "gazette-access-key", "gazette.example", "The Evening Gazette", "EUR"};

struct LoadArticle {
  sandbox::Article article;
  bool ownedByReader = false;  // bought before the paywalls load
};

LoadArticle Make(std::int64_t id, std::string slug, std::string title, double price,
                 std::string mode = sandbox::kNormalMode, bool enabled = true, bool active = true) {
  sandbox::Article article;
  article.id = id;
  article.publisherId = id > 9100 ? kGazette.id : seed::kPublisherId;
  article.url = "https://load.example/" + slug;
  article.title = std::move(title);
  article.category = seed::kCategory;
  article.price = article.priceInLocalCurrency = price;
  article.transactionMode = std::move(mode);
  article.paywallEnabledInCountry = enabled;
  article.active = active;
  return {article, article.transactionMode == sandbox::kInstantMode};  // the reader owns the instant ones
}

const std::vector<LoadArticle> kArticles = {
    Make(9001, "harbour-cranes", "Harbour cranes return to the old docks", 0.30),
    Make(9002, "night-trains", "Night trains: a comeback in numbers", 0.40),
    Make(9003, "five-things", "Five things to know this morning", 0.15, sandbox::kInstantMode),
    Make(9004, "free-weather", "Rain until Sunday", 0.10, sandbox::kNormalMode, false),
    Make(9005, "old-archive", "From the 1998 archive", 0.10, sandbox::kNormalMode, true, false),
    Make(9006, "long-read", "The long read: who owns the river", 30.0),
    Make(9101, "bridge", "The bridge that never opened", 0.35),
    Make(9102, "evening-headlines", "Evening headlines", 0.25, sandbox::kInstantMode),
    Make(9103, "chess", "A chess prodigy at nine", 0.45),
    Make(9104, "retired-column", "A column that ended", 0.20, sandbox::kNormalMode, true, false),
};

bool OfGazette(const sandbox::Article& article) { return article.publisherId == kGazette.id; }
std::string Domain(const sandbox::Article& a) { return OfGazette(a) ? kGazette.domain : seed::kPublisherDomain; }
std::string Key(const sandbox::Article& a) { return OfGazette(a) ? kGazette.accessKey : seed::kPublisherAccessKey; }

// What the paywall must decide for the article and reader.
std::string Expected(const LoadArticle& entry, bool loggedIn, double balance) {
  const sandbox::Article& article = entry.article;
  if (!article.paywallEnabledInCountry || !article.active) return "hidden";
  if (!loggedIn) return "card";  // no wallet yet: the unlock leads to the login
  if (entry.ownedByReader) return "revealed";
  return balance < article.priceInLocalCurrency ? "card without unlock" : "card";
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
    const auto owner = sandbox_.createSession(seed::kReaderEmail).value();
    reliability::StoreSession(owner);
    for (const LoadArticle& entry : kArticles) {
      ASSERT_TRUE(sandbox_.addArticle(entry.article));
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
    param.accessKey = Key(article);
    param.customerId = customerId;
    testing::CallProbe<OboloData> bid, accepted;
    NetworkManager::shared().createLoggedInBid(param, bid.completion(), bid.onFailure());
    ASSERT_TRUE(bid.wait() && bid.envelope() && bid.envelope()->data) << bid.failure().value_or("");
    AcceptBidParam accept;
    accept.oboloBidId = bid.envelope()->data->oboloBidId.value();
    accept.oboloTransactionMode = article.transactionMode;
    NetworkManager::shared().acceptBid(accept, accepted.completion(), accepted.onFailure());
    ASSERT_TRUE(accepted.wait());
    ASSERT_TRUE(sandbox_.ownsArticle(seed::kReaderEmail, article.url));
  }

  // The host app opens article `index` the way a host does: a new Obolo, then
  // the paywall over the content view or the whole screen.
  void Open(int index, bool loggedIn, std::optional<std::size_t> article = std::nullopt) {
    const LoadArticle& entry = kArticles[article.value_or(index % kArticles.size())];
    Obolo obolo(Key(entry.article), entry.article.category, sandbox_.logoUrl(), entry.article.url,
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

  testing::PaywallHost host_{seed::kNormalArticleUrl};
  std::vector<Loaded> loaded_;
};

TEST_F(LoadTest, AHundredPaywallsAtOnceEachReachTheirOwnArticlesDecision) {
  double balance = seed::kReaderBalance;
  for (const LoadArticle& entry : kArticles) balance -= entry.ownedByReader ? entry.article.priceInLocalCurrency : 0;
  const std::size_t from = TransfersSoFar();
  for (int i = 0; i < kLoggedOutWave; ++i) Open(i, false);
  // The reader logs in elsewhere; by the last wave the stored access token
  // has expired, so those paywalls refresh it first.
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail).value());
  for (int i = kLoggedOutWave; i < kLoggedOutWave + kLoggedInWave; ++i) Open(i, true);
  reliability::StoreSession(sandbox_.createSession(seed::kReaderEmail, -1min, 1h).value());
  for (int i = kLoggedOutWave + kLoggedInWave; i < kPaywalls; ++i) Open(i, true, 0);
  ASSERT_EQ(loaded_.size(), static_cast<std::size_t>(kPaywalls));
  Settle(std::chrono::seconds(90));

  std::set<std::int64_t> bids;
  std::map<std::string, int> expectedBids[2];  // per article, logged out and logged in
  std::map<std::string, int> decisions;
  for (std::size_t i = 0; i < loaded_.size(); ++i) {
    const auto& [entry, loggedIn, paywall] = loaded_[i];
    const sandbox::Article& article = entry->article;
    const std::string decision = Expected(*entry, loggedIn, balance);
    SCOPED_TRACE("paywall " + std::to_string(i) + ", " + article.url + (loggedIn ? ", logged in" : "") +
                 ", expected " + decision);
    ++expectedBids[loggedIn][article.url];
    ++decisions[decision];
    const PaywallLook look = PaywallLook::Of(*paywall, host_);
    if (decision == "hidden") {
      EXPECT_TRUE(look.readable() && look.bidId == 0) << ::testing::PrintToString(look);
      continue;
    }
    if (decision == "revealed") {
      EXPECT_TRUE(look.paywallShown && !look.cardShown && look.splashShown) << ::testing::PrintToString(look);
    } else {
      EXPECT_TRUE(look.offersCard()) << ::testing::PrintToString(look);
      EXPECT_EQ(look.unlockShown, decision == "card");
    }
    // Its own bid, made for its own article and reader, and its own texts.
    ASSERT_NE(look.bidId, 0);
    EXPECT_TRUE(bids.insert(look.bidId).second) << "bid " << look.bidId << " kept by two paywalls";
    const auto bid = sandbox_.bid(look.bidId);
    ASSERT_TRUE(bid.has_value());
    EXPECT_EQ(bid->articleId, article.id);
    EXPECT_EQ(bid->publisherId, article.publisherId);
    EXPECT_EQ(bid->customerId, loggedIn ? std::optional<std::int64_t>(seed::kReaderId) : std::nullopt);
    EXPECT_EQ(paywall->transactionMode, article.transactionMode);
    const std::string price = sandbox::FormatPrice(article.priceInLocalCurrency, "EUR");
    EXPECT_NE(look.prompt.find(article.title), std::string::npos) << look.prompt;
    EXPECT_NE(look.prompt.find(OfGazette(article) ? kGazette.name : seed::kPublisherName), std::string::npos)
        << look.prompt;
    EXPECT_EQ(look.price, price);
    EXPECT_EQ(paywall->btnUnlock->title(UIControlState::normal), "Unlock for " + price);
  }
  EXPECT_EQ(decisions, (std::map<std::string, int>{
                           {"card", 70}, {"card without unlock", 3}, {"revealed", 6}, {"hidden", 21}}));

  // One bid per paywall: none lost, none doubled, each for its article.
  std::map<std::string, int> sentBids[2];
  int refreshes = 0;
  for (const auto& request : sandbox_.requests()) {
    refreshes += request.path == sandbox::kNextAccessTokenPath;
    const bool loggedIn = request.path == sandbox::kCreateLoggedInBidPath;
    if (loggedIn || request.path == sandbox::kCreateLoggedOutBidPath) {
      ++sentBids[loggedIn][nlohmann::json::parse(request.body).value("articleUrl", "")];
    }
  }
  EXPECT_EQ(sentBids[0], expectedBids[0]);
  EXPECT_EQ(sentBids[1], expectedBids[1]);
  EXPECT_GE(refreshes, 1);
  EXPECT_LE(refreshes, kExpiredTokenWave);
  EXPECT_EQ(CallsSince(from).size(), static_cast<std::size_t>(kPaywalls + refreshes));

  // The reveals end; the cards stay.
  host_.advance(5100ms);
  for (const auto& [entry, loggedIn, paywall] : loaded_) {
    const PaywallLook look = PaywallLook::Of(*paywall, host_);
    EXPECT_TRUE(Expected(*entry, loggedIn, balance).starts_with("card") ? look.offersCard() : look.readable())
        << entry->article.url;
  }
  EXPECT_TRUE(host_.hasFloatingButtonOnScreen());
}

// The configuration is the kit's, not each paywall's: paywalls already on
// screen send their next bid with the configuration the host set last.
TEST_F(LoadTest, PaywallsOnScreenBidWithTheLatestConfiguration) {
  Open(0, false);
  Open(1, false);
  Settle();
  sandbox_.clearRequests();
  NotificationCenter::defaultCenter().post(kSessionEndedNotification);
  Settle();
  std::multiset<std::string> asked;
  for (const auto& request : sandbox_.requestsTo(sandbox::kCreateLoggedOutBidPath)) {
    asked.insert(nlohmann::json::parse(request.body).value("articleUrl", ""));
  }
  EXPECT_EQ(asked, (std::multiset<std::string>{kArticles[1].article.url, kArticles[1].article.url}));
}

}  // namespace
}  // namespace obolo
