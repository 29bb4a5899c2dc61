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

// A loopback port nothing listens on: bound, then released.
int ClosedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
  socklen_t length = sizeof address;
  ::bind(fd, reinterpret_cast<sockaddr*>(&address), length);
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

// Serves a logo (also under an error status) and an error page on a free
// loopback port, and captures log lines, waking the main loop for each so a
// test can wait for a line written on the HTTP session's thread.
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
    server_.set_keep_alive_max_count(1);  // so stopping never waits on an idle connection
    port_ = server_.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port_, 0);
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    ASSERT_TRUE(httplib::Client("127.0.0.1", port_).Get("/missing.png"));  // it answers before any test ends
    hits_ = 0;
  }

  void TearDown() override {
    server_.stop();
    if (thread_.joinable()) thread_.join();
    SetLogSink(nullptr);
  }

  std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }
  std::vector<std::string> lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  std::shared_ptr<UIImageView> imageView() { return std::make_shared<UIImageView>(CGRect(20, 30, 120, 60)); }

  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
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
