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

#include "platform/log.h"
#include "platform/main_loop.h"
#include "toolkit/ui_activity_indicator_view.h"
#include "ui/image_view_helpers.h"

namespace obolo {
namespace {

using namespace std::chrono_literals;

std::string KitImageBytes(const std::string& name) {
  auto kit = Bundle::withIdentifier(Bundle::kKitIdentifier);
  std::ifstream file(*kit->pathForResource(name, "png"), std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

// A loopback port nothing listens on: bound, then released.
int ClosedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  ::close(fd);
  return ntohs(address.sin_port);
}

std::shared_ptr<UIActivityIndicatorView> IndicatorIn(const UIView& view) {
  for (const auto& child : view.subviews()) {
    if (auto indicator = std::dynamic_pointer_cast<UIActivityIndicatorView>(child)) return indicator;
  }
  return nullptr;
}

// Captures log lines and wakes the main loop for each, so a test can wait on
// the loop for a line written on the HTTP session's thread.
class WakingLogCapture {
 public:
  WakingLogCapture() {
    SetLogSink([this](std::string_view line, LogContent) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.emplace_back(line);
      }
      MainLoop::main().post([] {});
    });
  }
  ~WakingLogCapture() { SetLogSink(nullptr); }
  std::vector<std::string> lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

// Serves the kit's images and a page that is no image, on a free loopback port.
class ImageFromUrlTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    logo_ = KitImageBytes("checkbox");
    server_.Get("/logo.png", [this](const httplib::Request&, httplib::Response& response) {
      ++hits_;
      response.set_content(logo_, "image/png");
    });
    server_.Get("/missing.png", [this](const httplib::Request&, httplib::Response& response) {
      ++hits_;
      response.status = 404;
      response.set_content("<html>Not Found</html>", "text/html");
    });
    server_.Get("/gone.png", [this](const httplib::Request&, httplib::Response& response) {
      ++hits_;
      response.status = 410;  // the status plays no part: an image is an image
      response.set_content(logo_, "image/png");
    });
    // One request per connection, so stopping the server never waits for an
    // idle kept-alive connection to time out.
    server_.set_keep_alive_max_count(1);
    port_ = server_.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port_, 0);
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // Returns once the server answers, so it is running before any test ends.
    httplib::Client client("127.0.0.1", port_);
    ASSERT_TRUE(client.Get("/missing.png"));
    hits_ = 0;
  }

  void TearDown() override {
    server_.stop();
    thread_.join();
  }

  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }

  std::shared_ptr<UIImageView> imageView() { return std::make_shared<UIImageView>(CGRect(20, 30, 120, 60)); }

  WakingLogCapture log;
  std::string logo_;
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
  std::atomic<int> hits_{0};
};

TEST_F(ImageFromUrlTest, ShowsALargeIndicatorUntilTheImageArrivesOnTheMainLoop) {
  auto view = imageView();
  const std::string address = url("/logo.png");
  imageFromURL(view, address);

  auto indicator = IndicatorIn(*view);
  ASSERT_NE(indicator, nullptr);
  EXPECT_EQ(indicator->style(), UIActivityIndicatorView::Style::large);
  EXPECT_TRUE(indicator->isAnimating());
  EXPECT_EQ(indicator->frame(), CGRect(0, 0, 120, 60));
  EXPECT_EQ(log.lines(), std::vector<std::string>{address});

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() != nullptr; }, 10s));
  EXPECT_EQ(view->image()->data(), logo_);
  EXPECT_EQ(indicator->superview(), nullptr);
  EXPECT_EQ(hits_, 1);
}

TEST_F(ImageFromUrlTest, AViewThatShowsAnImageGetsNoIndicatorAndKeepsItsImageUntilTheNewOneArrives) {
  auto view = imageView();
  auto old_image = UIImage::named("blankbox", Bundle::withIdentifier(Bundle::kKitIdentifier));
  view->setImage(old_image);
  imageFromURL(view, url("/logo.png"));
  EXPECT_EQ(IndicatorIn(*view), nullptr);
  EXPECT_EQ(view->image(), old_image);

  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() != old_image; }, 10s));
  EXPECT_EQ(view->image()->data(), logo_);
}

TEST_F(ImageFromUrlTest, TheStatusIsNotExaminedButABodyThatIsNoImageLeavesNoImage) {
  auto shown = imageView();
  imageFromURL(shown, url("/gone.png"));
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return shown->image() != nullptr; }, 10s));

  auto view = imageView();
  view->setImage(UIImage::named("blankbox", Bundle::withIdentifier(Bundle::kKitIdentifier)));
  imageFromURL(view, url("/missing.png"));
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return view->image() == nullptr; }, 10s));
}

TEST_F(ImageFromUrlTest, TextThatIsNoURLOnlyLogsAndSpins) {
  auto view = imageView();
  imageFromURL(view, "not a url");
  EXPECT_EQ(log.lines(), std::vector<std::string>{"not a url"});
  ASSERT_NE(IndicatorIn(*view), nullptr);
  EXPECT_TRUE(IndicatorIn(*view)->isAnimating());
  EXPECT_FALSE(MainLoop::main().runUntil([&] { return hits_ > 0 || view->image() != nullptr; }, 50ms));
}

TEST_F(ImageFromUrlTest, ATransportFailureIsLoggedAndLeavesTheViewAsItWas) {
  auto view = imageView();
  const std::string address = "http://127.0.0.1:" + std::to_string(ClosedPort()) + "/logo.png";
  imageFromURL(view, address);
  ASSERT_TRUE(MainLoop::main().runUntil([&] { return log.lines().size() == 2; }, 10s));
  EXPECT_EQ(log.lines()[0], address);
  EXPECT_FALSE(log.lines()[1].empty()) << "the failure's description";
  MainLoop::main().runFor(0s);
  auto indicator = IndicatorIn(*view);
  ASSERT_NE(indicator, nullptr) << "the indicator stays";
  EXPECT_TRUE(indicator->isAnimating());
  EXPECT_EQ(view->image(), nullptr);
}

TEST_F(ImageFromUrlTest, AnAddressOutsideHttpFailsAsUnsupported) {
  auto view = imageView();
  imageFromURL(view, "ftp://127.0.0.1/logo.png");
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"ftp://127.0.0.1/logo.png", "unsupported URL"}));
}

}  // namespace
}  // namespace obolo
