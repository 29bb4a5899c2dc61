#include "sandbox/price_format.h"

#include <cmath>
#include <cstdio>

namespace obolo::sandbox {
namespace {

std::string SymbolOf(std::string_view currency) {
  if (currency == "EUR") return "\u20AC";
  if (currency == "USD") return "$";
  if (currency == "GBP") return "\u00A3";
  return std::string(currency) + " ";
}

}  // namespace

std::string FormatPrice(double amount, std::string_view currency) {
  const double cents = std::round(std::fabs(amount) * 100.0);
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.2f", cents / 100.0);
  const bool negative = amount < 0 && cents > 0;
  return (negative ? "-" : "") + SymbolOf(currency) + digits;
}

}  // namespace obolo::sandbox
