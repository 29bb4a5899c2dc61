#include "toolkit/url.h"

#include <gtest/gtest.h>

namespace obolo {
namespace {

TEST(URLTest, OnlyWellFormedTextMakesAURL) {
  struct Case {
    const char* text;
    bool valid;
  } cases[] = {
      {"https://obolo.io/terms", true},
      {"mailto:support@obolo.io", true},
      {"http://127.0.0.1:8080/logo.png?size=2&x=%20#top", true},
      {"logo.png", true},  // a relative reference
      {"", false},
      {"not a url", false},
      {"https://obolo.io/a b", false},
      {"50%", false},
      {"https://obolo.io/%zz", false},
      {"https://obolo.io/<logo>", false},
      {"https://obolo.io/#a#b", false},
      {"https://obolo.io/caf\xC3\xA9", false},
  };
  for (const auto& c : cases) EXPECT_EQ(URL::fromString(c.text).has_value(), c.valid) << c.text;
  EXPECT_EQ(URL::fromString("HTTPS://user@Obolo.io:443/path?q")->scheme(), "https");
}

}  // namespace
}  // namespace obolo
