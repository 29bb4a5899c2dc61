// The catalogue, customers, bids and purchases. Devices, logins and tokens are
// in world_sessions.cc.

#include "sandbox/world.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "sandbox/price_format.h"
#include "sandbox/text_case.h"

namespace obolo::sandbox {
namespace {

// Wallet amounts are kept to the cent, so repeated purchases do not drift.
double RoundToCents(double amount) { return std::round(amount * 100.0) / 100.0; }

template <typename Map>
std::int64_t NextId(const Map& map, std::int64_t first) {
  return map.empty() ? first : std::max(first, map.rbegin()->first + 1);
}

}  // namespace

World::World(std::chrono::seconds access_lifetime, std::chrono::seconds refresh_lifetime)
    : access_lifetime_(access_lifetime), refresh_lifetime_(refresh_lifetime) {}

void World::setIssuer(std::string issuer) {
  std::lock_guard lock(mutex_);
  issuer_ = std::move(issuer);
}

void World::setTokenLifetimes(std::chrono::seconds access, std::chrono::seconds refresh) {
  std::lock_guard lock(mutex_);
  access_lifetime_ = access;
  refresh_lifetime_ = refresh;
}

void World::clear() {
  std::lock_guard lock(mutex_);
  publishers_.clear();
  articles_.clear();
  counters_.clear();
  customers_.clear();
  customer_by_email_.clear();
  bids_.clear();
  devices_.clear();
  login_keys_.clear();
  one_time_codes_.clear();
  grants_.clear();
}

bool World::addPublisher(Publisher publisher) {
  std::lock_guard lock(mutex_);
  if (publisher.id == 0) publisher.id = NextId(publishers_, 1);
  if (publishers_.contains(publisher.id)) return false;
  for (const auto& [id, existing] : publishers_) {
    if (EqualsIgnoringCase(existing.domain, publisher.domain)) return false;
  }
  publishers_.emplace(publisher.id, std::move(publisher));
  return true;
}

bool World::addArticle(Article article) {
  std::lock_guard lock(mutex_);
  if (!publishers_.contains(article.publisherId) || findArticle(article.url) != nullptr) return false;
  if (article.id == 0) article.id = NextId(articles_, 501);
  if (articles_.contains(article.id)) return false;
  counters_[article.id] = {};
  articles_.emplace(article.id, std::move(article));
  return true;
}

bool World::addCustomer(Customer customer) {
  std::lock_guard lock(mutex_);
  if (customer.id == 0) customer.id = NextId(customers_, 101);
  const std::string key = AsciiLower(customer.email);
  if (customers_.contains(customer.id) || customer_by_email_.contains(key)) return false;
  customer_by_email_.emplace(key, customer.id);
  const std::int64_t id = customer.id;
  customers_.emplace(id, CustomerRecord{std::move(customer), {}});
  return true;
}

std::optional<Customer> World::customer(std::string_view email) const {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  if (record == nullptr) return std::nullopt;
  return record->customer;
}

std::optional<bool> World::owns(std::string_view email, std::string_view article_url) const {
  std::lock_guard lock(mutex_);
  const CustomerRecord* record = findCustomer(email);
  const Article* article = findArticle(article_url);
  if (record == nullptr || article == nullptr) return std::nullopt;
  return ownsLocked(*record, article->id);
}

std::optional<Bid> World::bid(std::int64_t id) const {
  std::lock_guard lock(mutex_);
  auto it = bids_.find(id);
  if (it == bids_.end()) return std::nullopt;
  return it->second.bid;
}

const World::CustomerRecord* World::findCustomer(std::string_view email) const {
  auto it = customer_by_email_.find(AsciiLower(email));
  if (it == customer_by_email_.end()) return nullptr;
  return &customers_.at(it->second);
}

const Article* World::findArticle(std::string_view url) const {
  for (const auto& [id, article] : articles_) {
    if (article.url == url) return &article;
  }
  return nullptr;
}

bool World::ownsLocked(const CustomerRecord& record, std::int64_t article_id) const {
  return std::find(record.purchases.begin(), record.purchases.end(), article_id) != record.purchases.end();
}

BidView World::viewOf(const BidRecord& record) const {
  BidView view;
  view.bid = record.bid;
  view.article = articles_.at(record.bid.articleId);
  view.publisher = publishers_.at(record.bid.publisherId);
  view.ipAddress = record.ipAddress;
  view.isSIMEnabled = record.isSIMEnabled;
  if (record.bid.customerId) {
    const CustomerRecord& customer = customers_.at(*record.bid.customerId);
    view.customer = customer.customer;
    view.owned = ownsLocked(customer, record.bid.articleId);
  }
  return view;
}

Outcome<BidView> World::makeBid(const BidRequest& request, std::optional<std::int64_t> customer_id) {
  const Publisher* publisher = nullptr;
  for (const auto& [id, candidate] : publishers_) {
    if (!request.publisherDomain.empty() && EqualsIgnoringCase(candidate.domain, request.publisherDomain)) {
      publisher = &candidate;
    }
  }
  if (publisher == nullptr) {
    return ApiError{404, "Unknown publisher domain \"" + request.publisherDomain + "\""};
  }
  const Article* article = findArticle(request.articleUrl);
  if (article == nullptr || article->publisherId != publisher->id) {
    return ApiError{404, "Unknown article \"" + request.articleUrl + "\" for publisher " + publisher->domain};
  }

  BidRecord record;
  record.bid.id = next_bid_id_++;
  record.bid.articleId = article->id;
  record.bid.publisherId = publisher->id;
  record.bid.customerId = customer_id;
  record.ipAddress = request.ipAddress;
  record.userAgent = request.userAgent;
  record.isSIMEnabled = request.isSIMEnabled;
  ArticleCounters& counters = counters_[article->id];
  ++counters.visits;
  if (customer_id) ++counters.knownVisits;
  auto [it, inserted] = bids_.emplace(record.bid.id, std::move(record));
  return viewOf(it->second);
}

Outcome<BidView> World::createLoggedOutBid(const BidRequest& request) {
  std::lock_guard lock(mutex_);
  return makeBid(request, std::nullopt);
}

Outcome<BidView> World::createLoggedInBid(const Caller& caller, const BidRequest& request) {
  std::lock_guard lock(mutex_);
  if (!customers_.contains(caller.customerId)) return ApiError{401, "Unknown customer"};
  if (request.customerId != 0 && request.customerId != caller.customerId) {
    return ApiError{403,
                    "customerId " + std::to_string(request.customerId) + " does not match the access token"};
  }
  for (const auto& [id, publisher] : publishers_) {
    if (EqualsIgnoringCase(publisher.domain, request.publisherDomain) && !request.accessKey.empty() &&
        request.accessKey != publisher.accessKey) {
      return ApiError{403, "Invalid access key for publisher " + publisher.domain};
    }
  }
  return makeBid(request, caller.customerId);
}

Outcome<BidView> World::acceptBid(const Caller& caller, std::int64_t bid_id, std::string_view mode) {
  std::lock_guard lock(mutex_);
  auto it = bids_.find(bid_id);
  if (it == bids_.end()) return ApiError{404, "Unknown bid " + std::to_string(bid_id)};
  BidRecord& record = it->second;
  if (record.bid.customerId && *record.bid.customerId != caller.customerId) {
    return ApiError{403, "Bid " + std::to_string(bid_id) + " belongs to another customer"};
  }
  const Article& article = articles_.at(record.bid.articleId);
  if (!mode.empty() && mode != article.transactionMode) {
    return ApiError{400, "oboloTransactionMode \"" + std::string(mode) +
                             "\" does not match the bid's mode \"" + article.transactionMode + "\""};
  }

  auto customer_it = customers_.find(caller.customerId);
  if (customer_it == customers_.end()) return ApiError{401, "Unknown customer"};
  CustomerRecord& customer = customer_it->second;
  if (!ownsLocked(customer, article.id)) {
    const double price = article.priceInLocalCurrency;
    if (!customer.customer.creditAllowed && customer.customer.balance < price) {
      return ApiError{
          402, "Insufficient balance: " + FormatPrice(customer.customer.balance, customer.customer.currency) +
                   " is less than the price of " + FormatPrice(price, article.currency)};
    }
    customer.customer.balance = RoundToCents(customer.customer.balance - price);
    customer.purchases.push_back(article.id);
    ++counters_[article.id].unlocks;
  }
  record.bid.customerId = caller.customerId;
  record.bid.accepted = true;
  return viewOf(record);
}

Outcome<BalanceView> World::balanceAndRecommendations(const Caller& caller, std::int64_t customer_id,
                                                      std::int64_t publisher_id) const {
  std::lock_guard lock(mutex_);
  if (customer_id != 0 && customer_id != caller.customerId) {
    return ApiError{403, "customerId " + std::to_string(customer_id) + " does not match the access token"};
  }
  auto customer_it = customers_.find(caller.customerId);
  if (customer_it == customers_.end()) return ApiError{401, "Unknown customer"};
  const CustomerRecord& customer = customer_it->second;
  BalanceView view;
  view.customer = customer.customer;
  if (!customer.purchases.empty()) {
    const Article& last = articles_.at(customer.purchases.back());
    view.lastArticle = last;
    view.lastPublisher = publishers_.at(last.publisherId);
  }
  const bool known_publisher = publishers_.contains(publisher_id);
  for (const auto& [id, article] : articles_) {
    if (known_publisher && article.publisherId != publisher_id) continue;
    const ArticleCounters& counters = counters_.at(id);
    view.recommendations.push_back({article, publishers_.at(article.publisherId), ownsLocked(customer, id),
                                    counters.visits, counters.knownVisits, counters.unlocks});
  }
  return view;
}

}  // namespace obolo::sandbox
