// Where a remote image may be fetched from: a logo host may move its files, so
// the image follows up to five redirects, of any redirect status, but never a
// sixth, and never one that leaves https; and it holds no body past 8 MiB.
// Over real sockets to two origins of the test's own, one HTTPS, one plain.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cctype>
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/bundle.h"
#include "platform/main_loop.h"
#include "support/call_probe.h"
#include "support/log_capture.h"
#include "support/loopback_origin.h"
#include "ui/image_view_helpers.h"

namespace obolo {
namespace {

using testing::LoopbackOrigin;

// `text` as a query parameter's value.
std::string Encoded(const std::string& text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) {
    if (std::isalnum(c) != 0) {
      out += static_cast<char>(c);
    } else {
      out += {'%', kHex[c >> 4], kHex[c & 15]};
    }
  }
  return out;
}

// Both origins serve "/hop/N?status=S", which redirects with status S to
// "/hop/N-1" on the same origin, and "/hop/0", the logo. "/to?url=U"
// redirects to U; "/big?size=N" is N bytes of nothing in particular.
class ImageRedirectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MainLoop::main().useVirtualTime();
    setenv("OBOLO_CA_FILE", LoopbackOrigin::CertificateFile().c_str(), 1);
    std::ifstream file(*Bundle::withIdentifier(Bundle::kKitIdentifier)->pathForResource("checkbox", "png"));
    logo_.assign(std::istreambuf_iterator<char>(file), {});
    for (LoopbackOrigin* origin : {&https_, &http_}) {
      origin->setHandler([this](const httplib::Request& request, httplib::Response& response) {
        if (request.path == "/to") {
          response.status = 302;
          response.set_header("Location", request.get_param_value("url"));
        } else if (request.path == "/big") {
          response.set_content(std::string(std::stoul(request.get_param_value("size")), 'x'), "image/png");
        } else if (request.path == "/hop/0") {
          response.set_content(logo_, "image/png");
        } else {
          const int left = std::stoi(request.path.substr(5));
          const std::string status = request.has_param("status") ? request.get_param_value("status") : "302";
          response.status = std::stoi(status);
          response.set_header("Location", "/hop/" + std::to_string(left - 1) + "?status=" + status);
        }
      });
      ASSERT_TRUE(origin->start());
    }
  }

  // Asks for the image at `address` and lets the transfer end.
  std::shared_ptr<UIImageView> Fetch(const std::string& address) {
    auto view = std::make_shared<UIImageView>(CGRect(0, 0, 120, 60));
    log_.clear();
    imageFromURL(view, address);
    EXPECT_TRUE(transfers_.waitForHandled(++fetched_)) << "the transfer did not end";
    MainLoop::main().runFor(std::chrono::seconds(0));
    return view;
  }
  // Whether the view comes to show the logo; a transfer that delivered it has
  // ended, so only the main loop's part of the work is waited for.
  bool Shows(const UIImageView& view) const {
    MainLoop::main().runUntil([&] { return view.image() != nullptr; }, std::chrono::seconds(10));
    return view.image() && view.image()->data() == logo_;
  }
  // The lines written after the address: a failure's description, if any.
  std::vector<std::string> Failures() const {
    auto lines = log_.lines();
    if (!lines.empty()) lines.erase(lines.begin());
    return lines;
  }

  LoopbackOrigin https_{true};
  LoopbackOrigin http_{false};
  std::string logo_;
  testing::LogCapture log_;
  testing::TransferObserver transfers_;
  int fetched_ = 0;
};

TEST_F(ImageRedirectTest, UpToFiveRedirectsOfEveryStatusAreFollowedButNotASixth) {
  for (int status : {301, 302, 303, 307, 308}) {
    for (LoopbackOrigin* origin : {&https_, &http_}) {
      for (int hops : {0, 1, 5, 6}) {
        const std::string address = origin->baseUrl() + "/hop/" + std::to_string(hops) +
                                    "?status=" + std::to_string(status);
        SCOPED_TRACE(address);
        origin->clearRequests();
        auto view = Fetch(address);
        if (hops <= 5) {
          EXPECT_TRUE(Shows(*view));
          EXPECT_TRUE(Failures().empty());
          EXPECT_EQ(origin->requests().size(), static_cast<std::size_t>(hops) + 1);
        } else {
          EXPECT_EQ(view->image(), nullptr);
          EXPECT_EQ(Failures(), std::vector<std::string>{"More than 5 redirects."});
          EXPECT_EQ(origin->requests().size(), 6u) << "the sixth redirect is not taken";
        }
      }
    }
  }
}

TEST_F(ImageRedirectTest, ARedirectNeverLeavesHttps) {
  const std::string down = https_.baseUrl() + "/to?url=" + Encoded(http_.baseUrl() + "/hop/0");
  const struct {
    std::string what, address;
    bool shows;
    std::size_t httpRequests;
  } cases[] = {
      {"https to http", down, false, 0},
      {"http to https", http_.baseUrl() + "/to?url=" + Encoded(https_.baseUrl() + "/hop/0"), true, 1},
      {"http to https and back to http", http_.baseUrl() + "/to?url=" + Encoded(down), false, 1},
      {"http to http", http_.baseUrl() + "/to?url=" + Encoded(http_.baseUrl() + "/hop/0"), true, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    http_.clearRequests();
    auto view = Fetch(c.address);
    EXPECT_EQ(http_.requests().size(), c.httpRequests);
    if (c.shows) {
      EXPECT_TRUE(Shows(*view));
    } else {
      EXPECT_EQ(view->image(), nullptr);
      EXPECT_EQ(Failures(), std::vector<std::string>{"A redirect from https to another scheme was refused."});
    }
  }
}

TEST_F(ImageRedirectTest, AnImageBodyPastEightMebibytesIsRefused) {
  constexpr std::size_t kCap = 8 * 1024 * 1024;
  auto fits = Fetch(http_.baseUrl() + "/big?size=" + std::to_string(kCap));
  EXPECT_TRUE(Failures().empty());
  EXPECT_EQ(fits->image(), nullptr) << "eight mebibytes of nothing are no image";
  auto view = Fetch(http_.baseUrl() + "/big?size=" + std::to_string(kCap + 1));
  EXPECT_EQ(view->image(), nullptr);
  ASSERT_EQ(Failures().size(), 1u);
}

}  // namespace
}  // namespace obolo
