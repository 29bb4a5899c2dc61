#include "entry/obolo.h"

#include <atomic>

#include "entry/obolo_storyboard.h"
#include "entry/paywall_reporter.h"
#include "paywall/paywall_vc.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "platform/number_format.h"
#include "toolkit/text_layout_warmup.h"
#include "toolkit/ui_navigation_controller.h"
#include "ui/view_helpers.h"

namespace obolo {
namespace {

// The kit ships its storyboard, so this never fails in practice; were the
// scene missing, the host screen is left as it is and a line says why, rather
// than the host crashing over a paywall.
std::shared_ptr<PaywallVC> MakePaywall() {
  auto paywall = OboloStoryboard().instantiateViewController<PaywallVC>(kPaywallSceneIdentifier);
  if (!paywall) LogLine("Obolo: the paywall screen could not be made");
  return paywall;
}

// The first card of a process waits for the fonts its labels are measured
// in to load (some 15 to 40 ms here, more on a phone), then sets up each size
// its labels use. Doing both on the main loop's next turn, once the view has
// loaded and its bid has gone out, overlaps them with the bid's round trip.
// Once per process: later cards find everything loaded.
void WarmTextLayoutWhileTheBidTravels(const std::shared_ptr<UIView>& paywall_view) {
  static std::atomic<bool> posted{false};
  if (posted.exchange(true)) return;
  MainLoop::main().post([view = std::weak_ptr<UIView>(paywall_view)] {
    if (const auto root = view.lock()) {
      WarmTextLayout(*root);
    } else {
      posted = false;  // that paywall went before its turn came: warm with the next
    }
  });
}

}  // namespace

Obolo::Obolo(std::string accessKey, std::string category, std::string logoUrl, std::string articleUrl,
             std::string publisherCustomerId, std::string publisherDomain)
    : global(GlobalVariable::shared()), observers_(std::make_shared<PaywallObservers>()) {
  global.setAccessKey(std::move(accessKey));
  global.setCategory(std::move(category));
  global.setArticleUrl(std::move(articleUrl));
  global.setPublisherCustomerId(std::move(publisherCustomerId));
  global.setPublisherDomain(std::move(publisherDomain));
  global.setLogoUrl(std::move(logoUrl));
}

void Obolo::loadPaywall(const std::shared_ptr<UIViewController>& in) { loadView(in); }

void Obolo::addObserver(std::shared_ptr<PaywallObserver> observer) { observers_->add(std::move(observer)); }

void Obolo::removeObserver(const std::shared_ptr<PaywallObserver>& observer) { observers_->remove(observer); }

void Obolo::loadPaywall(const std::shared_ptr<UIViewController>& in, const std::shared_ptr<UIView>& content,
                        Position position) {
  loadView(in, content, position);
}

void Obolo::loadView(const std::shared_ptr<UIViewController>& in) {
  auto paywall = MakePaywall();
  if (!paywall || !in) return;
  paywall->viewController = in;
  paywall->reporter = PaywallReporter(observers_, global.articleUrl());
  const auto navigation = in->navigationController();
  LogLine(navigation ? ShortestDecimal(navigation->navigationBar()->bounds().size.height) : "0");
  const CGRect hostBounds = in->view()->bounds();
  // The first request for the paywall's view: it loads here, after the host
  // was handed over.
  paywall->view()->setFrame(CGRect{{0, 0}, hostBounds.size});
  in->addChild(paywall);
  in->view()->addSubview(paywall->view());
  addShadow(*paywall->view());
  WarmTextLayoutWhileTheBidTravels(paywall->view());
}

void Obolo::loadView(const std::shared_ptr<UIViewController>& in, const std::shared_ptr<UIView>& content,
                     Position position) {
  auto paywall = MakePaywall();
  if (!paywall || !in || !content) return;
  paywall->position = position;
  paywall->viewController = in;
  paywall->contentView = content;
  paywall->isCustom = true;
  paywall->reporter = PaywallReporter(observers_, global.articleUrl());
  content->setBackgroundColor(UIColor::clear());
  // The view loads here and sees the four fields above.
  paywall->view()->setFrame(content->bounds());
  in->addChild(paywall);
  content->addSubview(paywall->view());
  addShadow(*paywall->view());
  WarmTextLayoutWhileTheBidTravels(paywall->view());
}

}  // namespace obolo
