// How the service writes an amount of money for a reader: the currency's
// symbol and two decimals ("€0.50", "$1.25", "£3.00"), or the currency code
// and a space for currencies without a symbol here ("CHF 1.00").

#ifndef OBOLO_SANDBOX_PRICE_FORMAT_H_
#define OBOLO_SANDBOX_PRICE_FORMAT_H_

#include <string>
#include <string_view>

namespace obolo::sandbox {

// Negative amounts get a leading minus before the symbol ("-€2.00").
std::string FormatPrice(double amount, std::string_view currency);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_PRICE_FORMAT_H_
