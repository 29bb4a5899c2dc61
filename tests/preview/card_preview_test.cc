// A publisher's card drawn from a bid answer, offline, as the kit would show it.

#include "preview/card_preview.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "platform/http_session.h"
#include "platform/preference_store.h"
#include "platform/sqlite_preference_store.h"
#include "toolkit/render/render.h"
#include "toolkit/ui_screen.h"

namespace obolo {
namespace {

using nlohmann::json;

json BidAnswer() {
  std::ifstream file(OBOLO_BID_ANSWER_FILE);
  return json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
}

// Pixels in the kit's blue (the unlock button, the price).
long KitBluePixels(const RenderedImage& image, int fromY = 0, int toY = -1) {
  long count = 0;
  for (int y = fromY; y < (toY < 0 ? image.height() : toY); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const RGBA p = image.pixel(x, y);
      count += std::abs(p.red - 40) < 12 && std::abs(p.green - 128) < 12 && std::abs(p.blue - 235) < 12 ? 1 : 0;
    }
  }
  return count;
}

// The white rows of the card: first and last row where the screen's middle
// column is pure white below the masthead.
std::pair<int, int> WhiteSpan(const RenderedImage& image) {
  int first = -1, last = -1;
  const int x = image.width() / 2;
  for (int y = 110; y < image.height(); ++y) {
    if (image.pixel(x, y) == RGBA{255, 255, 255, 255}) {
      if (first < 0) first = y;
      last = y;
    }
  }
  return {first, last};
}

CardPreviewRequest Request(const json& answer, Position position = Position::center) {
  CardPreviewRequest request;
  request.bidAnswer = answer.dump();
  request.position = position;
  request.scale = 1;
  return request;
}

TEST(CardPreviewTest, TheKitsOwnDecisionSaysWhatTheAnswerShows) {
  struct Case {
    const char* what;
    std::function<void(json&)> change;
    std::string outcome;
    bool unlockButton;
  } cases[] = {
      {"an offer", [](json&) {}, "card", true},
      {"credit refused and a balance below the price", [](json& data) {
         data["isCreditAllowed"] = false;
         data["customerBalance"] = 0.2;
       }, "card", false},
      {"not sold in the reader's country", [](json& data) { data["isPaywallEnabledInCountry"] = false; }, "hidden",
       false},
      {"paid for already, in instant mode", [](json& data) {
         data["unlocked"] = true;
         data["oboloTransactionMode"] = "instant";
       }, "reveal", false},
  };
  for (const Case& c : cases) {
    json answer = BidAnswer();
    c.change(answer["data"]);
    const CardPreview preview = RenderCardPreview(Request(answer));
    ASSERT_TRUE(preview.image.ok()) << c.what << ": " << preview.image.error();
    EXPECT_EQ(preview.outcome, c.outcome) << c.what;
    EXPECT_EQ(preview.image.width(), 390);
    EXPECT_EQ(preview.image.height(), 844);
    // The unlock button is a wide field of the kit's blue; the price alone is not.
    EXPECT_EQ(KitBluePixels(preview.image) > 8000, c.unlockButton) << c.what;
  }
}

TEST(CardPreviewTest, ThePositionMovesTheCardAndTheLogoIsDrawn) {
  const auto top = WhiteSpan(RenderCardPreview(Request(BidAnswer(), Position::top)).image);
  const auto bottom = WhiteSpan(RenderCardPreview(Request(BidAnswer(), Position::bottom)).image);
  EXPECT_LT(top.first, bottom.first);
  EXPECT_LT(top.second, bottom.second);
  EXPECT_EQ(top.second - top.first, bottom.second - bottom.first) << "the same card, elsewhere";

  // A logo of the kit's blue: more blue on the card than without one.
  auto logo = std::make_shared<UIView>(CGRect(0, 0, 80, 20));
  logo->setBackgroundColor(UIColor(40.0 / 255, 128.0 / 255, 235.0 / 255, 1));
  CardPreviewRequest request = Request(BidAnswer());
  request.logo = RenderView(*logo).png();
  const CardPreview withLogo = RenderCardPreview(request);
  ASSERT_TRUE(withLogo.image.ok());
  EXPECT_GT(KitBluePixels(withLogo.image), KitBluePixels(RenderCardPreview(Request(BidAnswer())).image) + 2000);
}

TEST(CardPreviewTest, AnswersThatAreNoBidFailWithAReasonAndLeaveTheProcessAsItWas) {
  const auto store = std::make_shared<SqlitePreferenceStore>("");
  PreferenceStore::setStandard(store);
  UIScreen::main().setBounds(CGRect(0, 0, 320, 568));
  for (const char* answer : {"not json", "[1, 2]", "{\"success\": true}"}) {
    CardPreviewRequest request;
    request.bidAnswer = answer;
    const CardPreview preview = RenderCardPreview(request);
    EXPECT_FALSE(preview.image.ok()) << answer;
    EXPECT_FALSE(preview.image.error().empty()) << answer;
    EXPECT_EQ(preview.outcome, "") << answer;
  }
  const CardPreview drawn = RenderCardPreview(Request(BidAnswer()));
  ASSERT_TRUE(drawn.image.ok());
  EXPECT_EQ(PreferenceStore::setStandard(nullptr), store) << "the host's store is back";
  EXPECT_EQ(UIScreen::main().bounds(), CGRect(0, 0, 320, 568)) << "and its screen";
}

}  // namespace
}  // namespace obolo
