// The world a sandbox starts with unless told otherwise: one publisher with a
// handful of articles, each made for one path through the paywall, and two
// customers. Tests and the demo refer to them by these names.

#ifndef OBOLO_SANDBOX_DEFAULT_WORLD_H_
#define OBOLO_SANDBOX_DEFAULT_WORLD_H_

#include <cstdint>

namespace obolo::sandbox::seed {

// The publisher, as a host app configures the kit for it.
inline constexpr std::int64_t kPublisherId = 7;
inline constexpr char kPublisherAccessKey[] = "demo-access-key";
inline constexpr char kPublisherDomain[] = "news.example";
inline constexpr char kPublisherName[] = "The Example Times";
inline constexpr char kCurrency[] = "EUR";
inline constexpr char kCategory[] = "politics";
// The host app's own identifier for its reader; the service only records it.
inline constexpr char kPublisherCustomerId[] = "example-times-reader-1";

// Normal mode, the paywall applies: the card shows until the reader pays.
inline constexpr char kNormalArticleUrl[] = "https://news.example/politics/city-budget-vote";
inline constexpr char kNormalArticleTitle[] = "City council approves the budget after a night of debate";
inline constexpr double kNormalArticlePrice = 0.5;
// Instant mode, the paywall applies: once owned, the kit reveals it at once.
inline constexpr char kInstantArticleUrl[] = "https://news.example/business/morning-briefing";
inline constexpr char kInstantArticleTitle[] = "Your morning briefing";
inline constexpr double kInstantArticlePrice = 0.2;
// The paywall is not enabled in the reader's country: the kit hides it.
inline constexpr char kFreeArticleUrl[] = "https://news.example/local/weather-this-week";
// The article is not active: the kit hides the paywall.
inline constexpr char kInactiveArticleUrl[] = "https://news.example/archive/1998/old-story";
// Costs more than the reader's balance: for insufficient funds.
inline constexpr char kExpensiveArticleUrl[] = "https://news.example/investigations/harbour-deal";
inline constexpr double kExpensiveArticlePrice = 25.0;

// A reader with money and no credit.
inline constexpr std::int64_t kReaderId = 101;
inline constexpr char kReaderEmail[] = "reader@example.com";
inline constexpr char kReaderName[] = "Robin Reader";
inline constexpr double kReaderBalance = 10.0;
// A reader with an empty wallet whose purchases may go into credit.
inline constexpr std::int64_t kCreditReaderId = 102;
inline constexpr char kCreditReaderEmail[] = "credit@example.com";
inline constexpr char kCreditReaderName[] = "Casey Credit";
inline constexpr double kCreditReaderBalance = 0.0;

}  // namespace obolo::sandbox::seed

#endif  // OBOLO_SANDBOX_DEFAULT_WORLD_H_
