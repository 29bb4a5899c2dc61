// Answers shaped to exhaust the client, each under the transport's cap, over
// real sockets from the sandbox: each ends in onFailure with its stable
// sentence, or decodes by the usual rules, and the calls after it still
// complete. What they cost in memory and time is measured in bench/.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "entry/constants.h"
#include "network/network_manager.h"
#include "sandbox/default_world.h"
#include "sandbox/paths.h"
#include "support/call_probe.h"
#include "support/sandbox_environment.h"
#include "support/temporary_store.h"

OBOLO_USE_KEEP_ALIVE_SANDBOX_ENVIRONMENT();

namespace obolo {
namespace {

using testing::CallProbe;
namespace seed = sandbox::seed;

constexpr std::size_t kBodyBytes = 1'000'000;

std::string Repeat(std::string_view piece, std::size_t bytes) {
  std::string text;
  text.reserve(bytes + piece.size());
  while (text.size() + piece.size() <= bytes) text.append(piece);
  return text;
}

std::string Sentence(const std::string& why) { return "The data couldn't be read because " + why; }

class HostileAnswerTest : public ::testing::Test {
 protected:
  // A logged-out bid for the seeded article, as the paywall sends it.
  static CreateLoggedBidParam Bid() {
    CreateLoggedBidParam param;
    param.category = seed::kCategory;
    param.articleUrl = seed::kNormalArticleUrl;
    param.publisherCustomerId = seed::kPublisherCustomerId;
    param.publisherDomain = seed::kPublisherDomain;
    param.ipAddress = std::string(IP_ADDRESS);
    param.userAgent = std::string(USER_AGENT);
    return param;
  }

  testing::TemporaryStore store_;
  sandbox::Sandbox& sandbox_ = testing::SandboxEnvironment::sandbox();
  NetworkManager& network_ = NetworkManager::shared();
};

TEST_F(HostileAnswerTest, EachBodyGetsItsOutcomeAndTheNextCallStillCompletes) {
  std::string wide_records = R"({"data":{"recommendations":[)" + Repeat(R"({"visits":1},)", kBodyBytes);
  wide_records.back() = ']';
  wide_records += "}}";
  std::string wide_unknown = R"({"success":true,"extra":[)" + Repeat("{},", kBodyBytes);
  wide_unknown.back() = ']';
  wide_unknown += "}";
  std::string many_keys = "{";
  for (int i = 0; many_keys.size() < kBodyBytes; ++i) many_keys += "\"k" + std::to_string(i) + "\":0,";
  many_keys += R"("success":true})";
  const std::string huge_text(kBodyBytes, 'x');
  std::string nested = Repeat(R"({"a":)", kBodyBytes * 5 / 6);
  nested += "1" + std::string(nested.size() / 5, '}');

  const std::string too_deep = Sentence("it is nested more than 64 levels deep.");
  const struct {
    const char* name;
    bool balance;  // answered to the balance call instead of the bid
    std::string body;
    std::string failure;  // empty: the envelope decodes
    std::function<bool(const OboloData&)> bid_check;
  } cases[] = {
      {"a megabyte of [", false, std::string(kBodyBytes, '['), too_deep, {}},
      {"nested objects", false, nested, too_deep, {}},
      {"records past the limit", true, wide_records, Sentence(R"("data.recommendations" has more than 4096 elements.)"),
       {}},
      {"a wide array no member reads", false, wide_unknown, "",
       [](const OboloData& bid) { return bid.success == true && !bid.data; }},
      {"one huge string", false, R"({"success":true,"message":")" + huge_text + R"("})", "",
       [&](const OboloData& bid) { return bid.message == huge_text; }},
      {"many keys", false, many_keys, "", [](const OboloData& bid) { return bid.success == true; }},
  };

  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const char* path = c.balance ? sandbox::kBalanceAndArticlePath : sandbox::kCreateLoggedOutBidPath;
    sandbox_.setFault(path, sandbox::Fault::Custom(200, c.body));
    std::optional<std::string> failure;
    if (c.balance) {
      CallProbe<BalanceAndArticleData> probe;
      network_.getBalanceAndArticles({}, probe.completion(), probe.onFailure());
      ASSERT_TRUE(probe.wait());
      EXPECT_FALSE(probe.envelope().has_value());
      failure = probe.failure();
    } else {
      CallProbe<OboloData> probe;
      network_.createLoggedOutBid(Bid(), probe.completion(), probe.onFailure());
      ASSERT_TRUE(probe.wait());
      failure = probe.failure();
      if (c.bid_check) {
        ASSERT_TRUE(probe.envelope().has_value()) << failure.value_or("");
        EXPECT_TRUE(c.bid_check(*probe.envelope()));
      }
    }
    if (!c.failure.empty()) {
      EXPECT_EQ(failure, c.failure);
    }

    // The session is free for the next answer, which decodes in full.
    CallProbe<OboloData> next;
    network_.createLoggedOutBid(Bid(), next.completion(), next.onFailure());
    ASSERT_TRUE(next.wait());
    ASSERT_TRUE(next.envelope().has_value()) << next.failure().value_or("");
    ASSERT_TRUE(next.envelope()->data.has_value());
    EXPECT_EQ(next.envelope()->data->articleActive, true);
    EXPECT_EQ(next.calls(), 1);
  }
}

}  // namespace
}  // namespace obolo
