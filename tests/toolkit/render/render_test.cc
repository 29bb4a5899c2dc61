// What the renderer's pixels show for each thing a view can draw.

#include "toolkit/render/render.h"

#include <gtest/gtest.h>

#include "toolkit/render/draw_image.h"
#include "toolkit/ui_button.h"
#include "toolkit/ui_image_view.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "toolkit/attributed_string.h"
#include "toolkit/layout_constraint.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "toolkit/ui_alert_controller.h"
#include "toolkit/ui_label.h"
#include "toolkit/ui_view_controller.h"
#include "toolkit/ui_visual_effect_view.h"
#include "toolkit/ui_window.h"
#include "toolkit/url.h"
#include "toolkit/wk_web_view.h"

namespace obolo {
namespace {

constexpr RGBA kRed{255, 0, 0, 255};
constexpr RGBA kWhite{255, 255, 255, 255};
constexpr RGBA kBlue{0, 0, 255, 255};
constexpr RGBA kTransparent{0, 0, 0, 0};

std::shared_ptr<UIView> Box(CGRect frame, std::optional<UIColor> color) {
  auto view = std::make_shared<UIView>(frame);
  view->setBackgroundColor(color);
  return view;
}

// A 100 x 100 white canvas to draw on.
std::shared_ptr<UIView> Canvas(CGSize size = {100, 100}) { return Box(CGRect({0, 0}, size), UIColor::white()); }

int Luminance(RGBA p) { return (p.red + p.green + p.blue) / 3; }

// Pixels in the rectangle that differ clearly from white: where something is drawn.
int InkIn(const RenderedImage& image, int x0, int y0, int x1, int y1) {
  int count = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) count += Luminance(image.pixel(x, y)) < 200 ? 1 : 0;
  }
  return count;
}

TEST(RenderTest, BackgroundsHiddenViewsAndAlphaShowAsAReaderWouldSeeThem) {
  auto canvas = Canvas();
  auto red = Box(CGRect(10, 10, 30, 30), UIColor(1, 0, 0, 1));
  auto hidden = Box(CGRect(50, 10, 30, 30), UIColor(1, 0, 0, 1));
  hidden->setHidden(true);
  auto faded = Box(CGRect(10, 50, 30, 30), UIColor(0, 0, 1, 1));
  faded->setAlpha(0.5);
  auto parentOfHidden = Box(CGRect(50, 50, 30, 30), std::nullopt);
  parentOfHidden->setHidden(true);
  parentOfHidden->addSubview(Box(CGRect(0, 0, 30, 30), UIColor(1, 0, 0, 1)));
  for (const auto& view : {red, hidden, faded, parentOfHidden}) canvas->addSubview(view);

  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok()) << image.error();
  EXPECT_EQ(image.width(), 100);
  EXPECT_EQ(image.pixel(25, 25), kRed) << "a red background is red";
  EXPECT_EQ(image.pixel(5, 5), kWhite) << "outside it, the canvas";
  EXPECT_EQ(image.pixel(65, 25), kWhite) << "a hidden view is not drawn";
  EXPECT_EQ(image.pixel(65, 65), kWhite) << "nor is anything inside a hidden view";
  const RGBA blend = image.pixel(25, 65);
  EXPECT_NEAR(blend.red, 128, 1) << "half-transparent blue over white";
  EXPECT_NEAR(blend.green, 128, 1);
  EXPECT_EQ(blend.blue, 255);
}

TEST(RenderTest, CornersBordersAndClippingFollowTheLayer) {
  auto canvas = Box(CGRect(0, 0, 100, 100), std::nullopt);
  auto rounded = Box(CGRect(0, 0, 60, 60), UIColor(1, 0, 0, 1));
  rounded->layer().setCornerRadius(20);
  rounded->layer().setBorderWidth(4);
  rounded->layer().setBorderColor(UIColor(0, 0, 1, 1));
  auto clipping = Box(CGRect(70, 70, 20, 20), UIColor::white());
  clipping->setClipsToBounds(true);
  clipping->addSubview(Box(CGRect(10, 10, 40, 40), UIColor(1, 0, 0, 1)));
  auto spilling = Box(CGRect(70, 10, 20, 20), UIColor::white());
  spilling->addSubview(Box(CGRect(10, 10, 40, 40), UIColor(1, 0, 0, 1)));
  for (const auto& view : {rounded, clipping, spilling}) canvas->addSubview(view);

  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok()) << image.error();
  EXPECT_EQ(image.pixel(1, 1), kTransparent) << "a corner radius leaves the corner transparent";
  EXPECT_EQ(image.pixel(30, 30), kRed);
  EXPECT_EQ(image.pixel(30, 1), kBlue) << "the border runs along the edge";
  EXPECT_EQ(image.pixel(30, 6), kRed) << "and only as wide as it is";
  EXPECT_EQ(image.pixel(95, 95), kTransparent) << "a clipping view cuts its subview off";
  EXPECT_EQ(image.pixel(85, 85), kRed);
  EXPECT_EQ(image.pixel(95, 35), kRed) << "a view that does not clip lets it show";
}

TEST(RenderTest, LabelsDrawTheirTextInTheirColourWithinTheirLines) {
  auto canvas = Canvas({300, 120});
  auto label = std::make_shared<UILabel>(CGRect(10, 10, 280, 100));
  label->setText("Read the whole article, then pay only for it");
  label->setTextColor(UIColor(1, 0, 0, 1));
  label->setFont(UIFont::boldSystemFont(20));
  label->setNumberOfLines(0);
  canvas->addSubview(label);
  const TextLayout lines = TextLayoutService::shared()->layout(*label->text(), label->textStyle(), 280);
  ASSERT_EQ(lines.lines.size(), 2u);

  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok()) << image.error();
  int red = 0, other = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const RGBA p = image.pixel(x, y);
      if (Luminance(p) > 200) continue;
      (p.red > p.green + 60 && p.red > p.blue + 60 ? red : other) += 1;
    }
  }
  EXPECT_GT(red, 500) << "text is drawn, in the label's colour";
  EXPECT_EQ(other, 0) << "every inked pixel is red, antialiased edges included";

  // The text block is centred in the label: ink in each measured line, none
  // above the first or below the last.
  const int top = 10 + static_cast<int>((100 - lines.size.height) / 2);
  const int lineHeight = static_cast<int>(lines.lines[0].height);
  EXPECT_GT(InkIn(image, 10, top, 290, top + lineHeight), 200);
  EXPECT_GT(InkIn(image, 10, top + lineHeight, 290, top + 2 * lineHeight), 200);
  EXPECT_EQ(InkIn(image, 0, 0, 300, top - 1), 0);
  EXPECT_EQ(InkIn(image, 0, top + 2 * lineHeight + 1, 300, 120), 0);
  // Right of the longest line's measured width, nothing.
  const int right = 10 + static_cast<int>(std::max(lines.lines[0].width, lines.lines[1].width)) + 2;
  EXPECT_EQ(InkIn(image, right, 0, 300, 120), 0);
}

TEST(RenderTest, AnAttributedUnderlineRunsUnderTheText) {
  auto canvas = Canvas({200, 40});
  auto plain = std::make_shared<UILabel>(CGRect(0, 0, 200, 40));
  plain->setText("Terms");
  canvas->addSubview(plain);
  const RenderedImage before = RenderView(*canvas);

  NSAttributedString underlined("Terms");
  underlined.addAttribute(NSAttributedStringKey::underlineStyle, NSUnderlineStyle::single);
  plain->setAttributedText(underlined);
  const RenderedImage after = RenderView(*canvas);
  ASSERT_TRUE(before.ok() && after.ok());

  // A row below the letters that is empty without the underline and inked
  // along most of the word's width with it.
  const int width = static_cast<int>(plain->intrinsicContentSize().width);
  bool found = false;
  for (int y = 20; y < 40 && !found; ++y) {
    found = InkIn(before, 0, y, width, y + 1) == 0 && InkIn(after, 0, y, width, y + 1) > width * 3 / 4;
  }
  EXPECT_TRUE(found);
}

// A 20 x 10 image, red on its left half and blue on its right, made by the
// renderer itself and decoded as any image is.
std::shared_ptr<const UIImage> HalvesImage() {
  auto picture = Box(CGRect(0, 0, 20, 10), UIColor(1, 0, 0, 1));
  picture->addSubview(Box(CGRect(10, 0, 10, 10), UIColor(0, 0, 1, 1)));
  return UIImage::fromData(RenderView(*picture).png().value_or(""));
}

TEST(RenderTest, ImageViewsFitTheirImageAsTheirContentModeSays) {
  auto image = HalvesImage();
  ASSERT_NE(image, nullptr);
  struct Case {
    UIViewContentMode mode;
    CGRect destination;  // of the 20 x 10 image in a 40 x 40 view
    RGBA at5x20, at35x20, at12x5;
  } cases[] = {
      {UIViewContentMode::scaleToFill, CGRect(0, 0, 40, 40), kRed, kBlue, kRed},
      {UIViewContentMode::scaleAspectFit, CGRect(0, 10, 40, 20), kRed, kBlue, kWhite},
      {UIViewContentMode::scaleAspectFill, CGRect(-20, 0, 80, 40), kRed, kBlue, kRed},
      {UIViewContentMode::center, CGRect(10, 15, 20, 10), kWhite, kWhite, kWhite},
      {UIViewContentMode::topLeft, CGRect(0, 0, 20, 10), kWhite, kWhite, kBlue},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ImageDestination(image->size(), CGRect(0, 0, 40, 40), c.mode), c.destination)
        << static_cast<int>(c.mode);
    auto canvas = Canvas({40, 40});
    auto view = std::make_shared<UIImageView>(CGRect(0, 0, 40, 40));
    view->setImage(image);
    view->setContentMode(c.mode);
    view->setClipsToBounds(true);
    canvas->addSubview(view);
    const RenderedImage drawn = RenderView(*canvas);
    ASSERT_TRUE(drawn.ok()) << drawn.error();
    EXPECT_EQ(drawn.pixel(5, 20), c.at5x20) << static_cast<int>(c.mode);
    EXPECT_EQ(drawn.pixel(35, 20), c.at35x20) << static_cast<int>(c.mode);
    EXPECT_EQ(drawn.pixel(12, 5), c.at12x5) << static_cast<int>(c.mode);
  }
}

TEST(RenderTest, TemplateImagesTakeTheTintAndButtonsShowTheirImageBesideTheTitle) {
  auto canvas = Canvas({120, 40});
  auto button = std::make_shared<UIButton>(CGRect(0, 0, 120, 40));
  button->setImage(HalvesImage()->withRenderingMode(UIImageRenderingMode::alwaysTemplate), UIControlState::normal);
  button->setImageSize(CGSize{20, 10});
  button->setTintColor(UIColor(0, 0.5, 0, 1));
  button->setTitle("Pay", UIControlState::normal);
  canvas->addSubview(button);
  const RenderedImage drawn = RenderView(*canvas);
  ASSERT_TRUE(drawn.ok()) << drawn.error();
  const CGRect image = button->imageView()->frame();
  const CGRect title = button->titleLabel()->frame();
  EXPECT_EQ(title.minX(), image.maxX() + UIButton::kImageTitleSpacing) << "the title follows the image";
  EXPECT_NEAR((image.minX() + title.maxX()) / 2, 60, 1) << "the two centred together";
  const RGBA left = drawn.pixel(static_cast<int>(image.minX()) + 3, static_cast<int>(image.midY()));
  const RGBA right = drawn.pixel(static_cast<int>(image.maxX()) - 3, static_cast<int>(image.midY()));
  EXPECT_EQ(left.red, 0) << "a template's shape in the tint, whatever its own colours: " << left;
  EXPECT_NEAR(left.green, 128, 1) << left;
  EXPECT_EQ(left.blue, 0) << left;
  EXPECT_EQ(left.alpha, 255);
  EXPECT_EQ(right, left);
}

TEST(RenderTest, ShadowsFallOutsideTheViewAndFadeAway) {
  auto canvas = Canvas({120, 120});
  auto card = Box(CGRect(30, 30, 60, 60), UIColor::white());
  card->layer().setShadowColor(UIColor::black());
  card->layer().setShadowOpacity(0.5);
  card->layer().setShadowRadius(6);
  card->layer().setShadowOffset(CGSize{0, 6});
  canvas->addSubview(card);
  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok()) << image.error();
  EXPECT_EQ(image.pixel(60, 60), kWhite) << "the view covers its own shadow";
  EXPECT_LT(Luminance(image.pixel(60, 93)), 235) << "shade just below the view";
  EXPECT_LT(Luminance(image.pixel(60, 93)), Luminance(image.pixel(60, 27))) << "more below than above: the offset";
  EXPECT_EQ(image.pixel(60, 118), kWhite) << "gone far away";
}

TEST(RenderTest, ABlurViewBlursWhatLiesBeneathIt) {
  // Black on the left half, white on the right; a blur view over the middle.
  auto canvas = Canvas({200, 100});
  canvas->addSubview(Box(CGRect(0, 0, 100, 100), UIColor::black()));
  auto blur = std::make_shared<UIVisualEffectView>(UIBlurEffect(UIBlurEffect::Style::dark));
  blur->setFrame(CGRect(60, 0, 80, 50));
  canvas->addSubview(blur);
  blur->setEffect(UIBlurEffect(UIBlurEffect::Style::regular));

  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok()) << image.error();
  const int left = Luminance(image.pixel(96, 25));
  const int right = Luminance(image.pixel(104, 25));
  EXPECT_GT(left, 40) << "black beside the edge turns grey under the blur";
  EXPECT_LT(right, 235) << "and white grey";
  EXPECT_LT(right - left, 120) << "the edge is soft";
  EXPECT_EQ(image.pixel(96, 75), (RGBA{0, 0, 0, 255})) << "outside the blur view the edge stays sharp";
  EXPECT_EQ(image.pixel(104, 75), kWhite);
}

TEST(RenderTest, TheWebViewShowsAnOutlinedPageWithItsAddress) {
  auto render = [](const char* address) {
    auto canvas = Canvas({320, 200});
    auto web = std::make_shared<WKWebView>(CGRect(0, 0, 320, 200), WKWebViewConfiguration());
    web->load(URLRequest(*URL::fromString(address)));
    canvas->addSubview(web);
    return RenderView(*canvas);
  };
  const RenderedImage one = render("https://wallet.obolo.io/?login_publisher_id=7");
  const RenderedImage other = render("https://login.example.org/?login_publisher_id=7");
  ASSERT_TRUE(one.ok() && other.ok());
  EXPECT_LT(Luminance(one.pixel(0, 100)), 220) << "an outline";
  EXPECT_GT(InkIn(one, 40, 10, 300, 44), 100) << "the address is written in the bar";
  int differing = 0;
  for (int y = 10; y < 44; ++y) {
    for (int x = 0; x < 320; ++x) differing += one.pixel(x, y) == other.pixel(x, y) ? 0 : 1;
  }
  EXPECT_GT(differing, 10) << "another address reads differently";
}

TEST(RenderTest, TheActivityIndicatorSpinsInItsMiddle) {
  auto canvas = Canvas({60, 60});
  auto spinner = std::make_shared<UIActivityIndicatorView>(UIActivityIndicatorView::Style::large);
  spinner->setFrame(CGRect(0, 0, 60, 60));
  spinner->startAnimating();
  canvas->addSubview(spinner);
  const RenderedImage image = RenderView(*canvas);
  ASSERT_TRUE(image.ok());
  EXPECT_GT(InkIn(image, 12, 12, 48, 48), 50);
  EXPECT_EQ(InkIn(image, 0, 0, 60, 8), 0) << "within its 37-point circle";
  spinner->stopAnimating();
  EXPECT_EQ(InkIn(RenderView(*canvas), 0, 0, 60, 60), 0) << "a stopped spinner hides itself";
}

TEST(RenderTest, AnAlertDimsTheScreenAndShowsItsPanelInTheMiddle) {
  auto window = std::make_shared<UIWindow>();
  window->setFrame(CGRect(0, 0, 390, 844));
  auto host = std::make_shared<UIViewController>();
  window->setRootViewController(host);
  host->view()->setBackgroundColor(UIColor::white());
  window->makeKeyAndVisible();
  auto alert = std::make_shared<UIAlertController>("Payment", "The article is yours.", UIAlertController::Style::alert);
  alert->addAction(std::make_shared<UIAlertAction>("OK", UIAlertAction::Style::defaultStyle));
  host->present(alert, false);

  const RenderedImage image = RenderView(*window);
  ASSERT_TRUE(image.ok()) << image.error();
  EXPECT_NEAR(Luminance(image.pixel(20, 20)), 153, 2) << "white under 40% black";
  EXPECT_GT(Luminance(image.pixel(66, 422)), 240) << "the panel is light";
  EXPECT_GT(InkIn(image, 75, 300, 315, 544), 300) << "title, message and button are drawn";
}

TEST(RenderTest, LayoutRunsFirstAndASizeOptionResizesTheRoot) {
  auto root = Box(CGRect(0, 0, 100, 100), UIColor::white());
  auto bar = Box(CGRect(), UIColor(1, 0, 0, 1));
  bar->setTranslatesAutoresizingMaskIntoConstraints(false);
  root->addSubview(bar);
  NSLayoutConstraint::activate({bar->leadingAnchor().equalTo(root->leadingAnchor()),
                                bar->trailingAnchor().equalTo(root->trailingAnchor()),
                                bar->bottomAnchor().equalTo(root->bottomAnchor()),
                                bar->heightAnchor().equalToConstant(10)});
  RenderOptions options;
  options.size = CGSize{200, 50};
  options.scale = 2;
  const RenderedImage image = RenderView(*root, options);
  ASSERT_TRUE(image.ok()) << image.error();
  EXPECT_EQ(image.width(), 400);
  EXPECT_EQ(image.height(), 100);
  EXPECT_EQ(image.pixel(399, 95), kRed) << "the bar follows the new size, at twice the pixels";
  EXPECT_EQ(image.pixel(399, 75), kWhite);
}

TEST(RenderTest, RendersAreDeterministicAndSurviveAPngRoundTrip) {
  auto canvas = Canvas({160, 60});
  auto label = std::make_shared<UILabel>(CGRect(0, 0, 160, 60));
  label->setText("Unlock for 0.50 EUR");
  canvas->addSubview(label);
  const auto first = RenderView(*canvas).png();
  const auto second = RenderView(*canvas).png();
  ASSERT_TRUE(first && second);
  EXPECT_EQ(*first, *second);

  const std::string path = (std::filesystem::temp_directory_path() / "obolo-render-test.png").string();
  const RenderedImage image = RenderView(*canvas);
  ASSERT_EQ(image.writePng(path), "");
  const RenderedImage read = RenderedImage::FromPngFile(path);
  ASSERT_TRUE(read.ok()) << read.error();
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 160; ++x) ASSERT_EQ(read.pixel(x, y), image.pixel(x, y)) << x << "," << y;
  }
  std::filesystem::remove(path);
}

TEST(RenderTest, ImpossibleRequestsFailWithAReason) {
  auto canvas = Canvas();
  RenderOptions zero;
  zero.scale = 0;
  EXPECT_FALSE(RenderView(*canvas, zero).ok());
  RenderOptions huge;
  huge.size = CGSize{100000, 10};
  const RenderedImage tooLarge = RenderView(*canvas, huge);
  EXPECT_FALSE(tooLarge.ok());
  EXPECT_NE(tooLarge.error().find("pixels"), std::string::npos) << tooLarge.error();
  EXPECT_FALSE(tooLarge.png());
  EXPECT_NE(RenderView(*Canvas()).writePng("/nonexistent-directory/picture.png"), "");
  EXPECT_FALSE(RenderedImage::FromPngFile("/nonexistent-directory/picture.png").ok());
}

}  // namespace
}  // namespace obolo
