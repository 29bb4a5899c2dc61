#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/main_loop.h"
#include "sandbox/publisher_logo.h"
#include "support/pixels.h"
#include "toolkit/image_decoder.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "ui/image_view_helpers.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

// A loopback port nothing listens on: bound, then released.
int ClosedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{
      .sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
  socklen_t length = sizeof address;
  ::bind(fd, reinterpret_cast<sockaddr*>(&address), length);
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  ::close(fd);
  return ntohs(address.sin_port);
}

// A whole, valid PNG of one row more than the pixel limit allows: 170 KB that
// would inflate to 33 MB. Made on first use.
const std::string& HugePng() {
  static const std::string png =
      sandbox::EncodePng(4096, 2049, std::vector<sandbox::Rgba>(4096 * 2049, sandbox::kLogoDisc));
  return png;
}

std::shared_ptr<UIActivityIndicatorView> IndicatorIn(const UIView& view) {
  for (const auto& child : view.subviews()) {
    if (auto indicator = std::dynamic_pointer_cast<UIActivityIndicatorView>(child)) return indicator;
  }
  return nullptr;
}

// Serves a logo (also under an error status), the publisher logo as JPEG and
// WebP, an image beyond the pixel limit and an error page on a free loopback
// port; captures log lines, waking the main loop for each so a test can wait
// for a line written on the HTTP session's thread; and records where each
// image was decoded.
class ImageFromUrlTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    SetLogSink([this](std::string_view line, LogContent) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.emplace_back(line);
      }
      MainLoop::main().post([] {});
    });
    std::ifstream file(*Bundle::withIdentifier(Bundle::kKitIdentifier)->pathForResource("checkbox", "png"));
    logo_.assign(std::istreambuf_iterator<char>(file), {});
    auto serve = [this](int status, const std::string& body, const char* type) {
      return [=, this](const httplib::Request&, httplib::Response& response) {
        ++hits_;
        response.status = status;
        response.set_content(body, type);
      };
    };
    server_.Get("/logo.png", serve(200, logo_, "image/png"));
    server_.Get("/gone.png", serve(410, logo_, "image/png"));
    server_.Get("/missing.png", serve(404, "<html>Not Found</html>", "text/html"));
    server_.Get("/logo.jpg", serve(200, sandbox::PublisherLogoJpeg(), "image/jpeg"));
    server_.Get("/logo.webp", serve(200, sandbox::PublisherLogoWebp(), "image/webp"));
    server_.Get("/huge.png", [](const httplib::Request&, httplib::Response& response) {
      response.set_content(HugePng(), "image/png");
    });
    server_.set_keep_alive_max_count(1);  // so stopping never waits on an idle connection
    port_ = server_.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port_, 0);
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    ASSERT_TRUE(httplib::Client("127.0.0.1", port_).Get("/missing.png"));  // it answers before any test ends
    hits_ = 0;
    SetImageDecodeObserver([this](bool decoded) {
      std::lock_guard<std::mutex> lock(mutex_);
      decodes_.push_back({decoded, MainLoop::main().isMainThread(), IsHttpSessionThread()});
    });
  }

  void TearDown() override {
    SetImageDecodeObserver(nullptr);
    server_.stop();
    if (thread_.joinable()) thread_.join();
    SetLogSink(nullptr);
  }

  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }
  std::vector<std::string> lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  struct Decode {
    bool decoded;
    bool on_main_thread;
    bool on_session_thread;
  };
  std::vector<Decode> decodes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return decodes_;
  }
  std::shared_ptr<UIImageView> imageView() { return std::make_shared<UIImageView>(CGRect(20, 30, 120, 60)); }

  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  std::vector<Decode> decodes_;
  std::string logo_;
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
  std::atomic<int> hits_{0};
};

TEST_F(ImageFromUrlTest, ShowsALargeIndicatorUntilTheImageArrivesOnTheMainLoop) {
  auto view = imageView();
  imageFromURL(view, url("/logo.png"));
  auto indicator = IndicatorIn(*view);
  ASSERT_NE(indicator, nullptr);
  EXPECT_EQ(indicator->style(), UIActivityIndicatorView::Style::large);
  EXPECT_TRUE(indicator->isAnimating());
  EXPECT_EQ(indicator->frame(), CGRect(0, 0, 120, 60));
  EXPECT_EQ(lines(), std::vector<std::string>{url("/logo.png")});

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() != nullptr; }, 10s));
  EXPECT_EQ(view->image()->data(), logo_);
  EXPECT_EQ(indicator->superview(), nullptr);
  EXPECT_EQ(hits_, 1);
}

TEST_F(ImageFromUrlTest, AViewThatShowsAnImageGetsNoIndicatorAndKeepsItsImageUntilTheNewOneArrives) {
  auto view = imageView();
  auto old_image = UIImage::named("blankbox", Bundle::withIdentifier(Bundle::kKitIdentifier));
  view->setImage(old_image);
  imageFromURL(view, url("/gone.png"));  // the status plays no part: an image is an image
  EXPECT_EQ(IndicatorIn(*view), nullptr);
  EXPECT_EQ(view->image(), old_image);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() != old_image; }, 10s));
  EXPECT_EQ(view->image()->data(), logo_);

  imageFromURL(view, url("/missing.png"));
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() == nullptr; }, 10s))
      << "a body that is no image leaves no image";
}

TEST_F(ImageFromUrlTest, JpegAndWebpLogosArriveDecodedOnTheSessionThreadNotTheMainLoop) {
  struct Case {
    const char* path;
    ImageFormat format;
    int tolerance;  // JPEG is lossy
  } cases[] = {{"/logo.jpg", ImageFormat::jpeg, 12}, {"/logo.webp", ImageFormat::webp, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    auto view = imageView();
    imageFromURL(view, url(c.path));
    ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() != nullptr; }, 10s));
    EXPECT_EQ(IndicatorIn(*view), nullptr);
    EXPECT_EQ(view->image()->format(), c.format);
    EXPECT_EQ(view->image()->size(), (CGSize{64, 64}));
    const DecodedImage& pixels = view->image()->pixels();
    EXPECT_LE(testing::ChannelDistance(testing::PixelAt(pixels, 32, 32), testing::Opaque(sandbox::kLogoDisc)),
              c.tolerance);
  }
  const auto seen = decodes();
  ASSERT_EQ(seen.size(), 2u) << "each body decoded once";
  for (const Decode& decode : seen) {
    EXPECT_TRUE(decode.decoded);
    EXPECT_TRUE(decode.on_session_thread);
    EXPECT_FALSE(decode.on_main_thread);
  }
}

TEST_F(ImageFromUrlTest, AnImageBeyondThePixelLimitLeavesTheViewEmpty) {
  auto view = imageView();
  imageFromURL(view, url("/huge.png"));
  auto indicator = IndicatorIn(*view);
  ASSERT_NE(indicator, nullptr);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return indicator->superview() == nullptr; }, 10s))
      << "the answer arrived and the indicator went";
  EXPECT_EQ(view->image(), nullptr);
  const auto seen = decodes();
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_FALSE(seen[0].decoded) << "refused";
  EXPECT_TRUE(seen[0].on_session_thread);
}

TEST_F(ImageFromUrlTest, WhatCannotBeFetchedIsLoggedAndLeavesTheIndicatorSpinning) {
  struct Case {
    std::string address;
    std::size_t lines;  // the address, then the failure's description
  } cases[] = {
      {"not a url", 1},
      {"http://127.0.0.1:" + std::to_string(ClosedPort()) + "/logo.png", 2},
      {"ftp://127.0.0.1/logo.png", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.address);
    const std::size_t before = lines().size();
    auto view = imageView();
    imageFromURL(view, c.address);
    ASSERT_TRUE(MainLoop::main().runUntil([&] { return lines().size() == before + c.lines; }, 10s));
    MainLoop::main().runFor(50ms);
    EXPECT_EQ(lines()[before], c.address);
    EXPECT_FALSE(lines().back().empty());
    ASSERT_NE(IndicatorIn(*view), nullptr);
    EXPECT_TRUE(IndicatorIn(*view)->isAnimating());
    EXPECT_EQ(view->image(), nullptr);
  }
  EXPECT_EQ(lines().back(), "unsupported URL");
  EXPECT_EQ(hits_, 0);
}

}  // namespace
}  // namespace obolo
