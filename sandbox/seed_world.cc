#include "sandbox/seed_world.h"

#include "sandbox/default_world.h"

namespace obolo::sandbox {
namespace {

Article MakeArticle(std::int64_t id, const char* url, const char* title, const char* category, double price,
                    const char* mode) {
  Article article;
  article.id = id;
  article.publisherId = seed::kPublisherId;
  article.url = url;
  article.title = title;
  article.category = category;
  article.author = "Alex Example";
  article.publishedDate = "2024-05-02T07:00:00Z";
  article.price = price;
  article.priceInLocalCurrency = price;
  article.currency = seed::kCurrency;
  article.transactionMode = mode;
  return article;
}

}  // namespace

void SeedDefaultWorld(World& world) {
  world.addPublisher(Publisher{seed::kPublisherId, seed::kPublisherAccessKey, seed::kPublisherDomain,
                               seed::kPublisherName, seed::kCurrency});

  world.addArticle(MakeArticle(501, seed::kNormalArticleUrl, seed::kNormalArticleTitle, seed::kCategory,
                               seed::kNormalArticlePrice, kNormalMode));
  world.addArticle(MakeArticle(502, seed::kInstantArticleUrl, seed::kInstantArticleTitle, "business",
                               seed::kInstantArticlePrice, kInstantMode));
  Article free = MakeArticle(503, seed::kFreeArticleUrl, "Sunshine all week", "local", 0.3, kNormalMode);
  free.paywallEnabledInCountry = false;
  world.addArticle(free);
  Article inactive = MakeArticle(504, seed::kInactiveArticleUrl, "An old story", "archive", 0.3, kNormalMode);
  inactive.active = false;
  world.addArticle(inactive);
  world.addArticle(MakeArticle(505, seed::kExpensiveArticleUrl, "The harbour deal: a year-long investigation",
                               "investigations", seed::kExpensiveArticlePrice, kNormalMode));

  Customer reader;
  reader.id = seed::kReaderId;
  reader.email = seed::kReaderEmail;
  reader.name = seed::kReaderName;
  reader.balance = seed::kReaderBalance;
  reader.currency = seed::kCurrency;
  reader.creditAllowed = false;
  world.addCustomer(reader);

  Customer credit;
  credit.id = seed::kCreditReaderId;
  credit.email = seed::kCreditReaderEmail;
  credit.name = seed::kCreditReaderName;
  credit.balance = seed::kCreditReaderBalance;
  credit.currency = seed::kCurrency;
  credit.creditAllowed = true;
  world.addCustomer(credit);
}

}  // namespace obolo::sandbox
