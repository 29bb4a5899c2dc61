#include "preview/card_preview.h"

#include <chrono>
#include <memory>

#include "entry/obolo.h"
#include "network/response_records.h"
#include "paywall/paywall_vc.h"
#include "platform/main_loop.h"
#include "platform/preference_store.h"
#include "platform/sqlite_preference_store.h"
#include "preview/answering_session.h"
#include "preview/article_screen.h"
#include "toolkit/render/render.h"
#include "toolkit/ui_screen.h"

namespace obolo {
namespace {

// The configuration the preview's kit runs with; the service is never asked.
constexpr char kLogoUrl[] = "https://preview.obolo.io/publisher-logo.png";
constexpr char kArticleUrl[] = "https://preview.obolo.io/article";

// How long the kit may take over answers that never leave the process.
constexpr auto kAnswerTimeout = std::chrono::seconds(10);
// Turns run after the last answer: the decision, then the card's texts (a
// later turn), then anything those post.
constexpr int kSettlingTurns = 4;

// Installs the preview's session, store and screen size, and puts the
// previous ones back when it goes.
class PreviewWorld {
 public:
  explicit PreviewWorld(std::shared_ptr<HttpSession> session)
      : screen_(UIScreen::main().bounds()),
        session_(HttpSession::setShared(std::move(session))),
        store_(PreferenceStore::setStandard(std::make_shared<SqlitePreferenceStore>(""))) {}
  ~PreviewWorld() {
    HttpSession::setShared(std::move(session_));
    PreferenceStore::setStandard(std::move(store_));
    UIScreen::main().setBounds(screen_);
  }
  PreviewWorld(const PreviewWorld&) = delete;
  PreviewWorld& operator=(const PreviewWorld&) = delete;

 private:
  CGRect screen_;
  std::shared_ptr<HttpSession> session_;
  std::shared_ptr<PreferenceStore> store_;
};

// Runs the main loop until the tasks posted so far, and those they post, have run.
void Settle() {
  for (int turn = 0; turn < kSettlingTurns; ++turn) {
    bool reached = false;
    MainLoop::main().post([&reached] { reached = true; });
    MainLoop::main().runUntil([&reached] { return reached; }, kAnswerTimeout);
  }
}

}  // namespace

CardPreview RenderCardPreview(const CardPreviewRequest& request) {
  CardPreview preview;
  const auto decoded = OboloData::decode(request.bidAnswer);
  if (!decoded) {
    preview.image = RenderedImage::Failed("the bid answer does not decode: " + decoded.error());
    return preview;
  }
  if (!decoded.value().data) {
    preview.image = RenderedImage::Failed("the bid answer has no \"data\": the kit would show nothing");
    return preview;
  }
  if (!(request.screen.width >= 1 && request.screen.height >= 1)) {
    preview.image = RenderedImage::Failed("the screen size must be positive");
    return preview;
  }

  auto session = std::make_shared<AnsweringSession>(request.bidAnswer, kLogoUrl, request.logo);
  std::shared_ptr<PaywallVC> paywall;
  {
    PreviewWorld world(session);
    ArticleScreen screen(request.screen);
    Obolo obolo("preview-access-key", "preview", kLogoUrl, kArticleUrl, "preview-reader", "preview.obolo.io");
    obolo.loadPaywall(screen.host, screen.content, request.position);
    paywall = std::dynamic_pointer_cast<PaywallVC>(screen.host->children().back());

    // The bid (and the logo) are answered at once; then the kit decides and
    // fills the card on later turns.
    MainLoop::main().runUntil([&] { return session->answered() > 0 && session->waiting() == 0; }, kAnswerTimeout);
    Settle();

    if (paywall->view()->isHidden()) {
      preview.outcome = "hidden";
    } else if (!paywall->unlockView->isHidden()) {
      preview.outcome = "card";
    } else {
      preview.outcome = "reveal";
    }
    RenderOptions options;
    options.scale = request.scale;
    preview.image = RenderView(*screen.window, options);
    if (!preview.image.ok()) preview.outcome.clear();
  }
  return preview;
}

}  // namespace obolo
