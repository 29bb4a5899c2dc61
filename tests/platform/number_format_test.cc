#include "platform/number_format.h"

#include <gtest/gtest.h>

#include <limits>

namespace obolo {
namespace {

TEST(ShortestDecimalTest, WholeNumbersKeepOneZeroAndFractionsReadBack) {
  struct Case {
    double value;
    const char* text;
  } cases[] = {
      {10, "10.0"},     {12.5, "12.5"},   {0, "0.0"},   {-3, "-3.0"},
      {0.1 + 0.2, "0.30000000000000004"}, {4.99, "4.99"}, {1e16, "1e+16"},
      {std::numeric_limits<double>::infinity(), "inf"},
  };
  for (const auto& c : cases) EXPECT_EQ(ShortestDecimal(c.value), c.text) << c.value;
}

}  // namespace
}  // namespace obolo
