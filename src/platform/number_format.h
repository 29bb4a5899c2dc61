// How the kit writes numbers into its lines and labels.

#ifndef OBOLO_PLATFORM_NUMBER_FORMAT_H_
#define OBOLO_PLATFORM_NUMBER_FORMAT_H_

#include <string>

namespace obolo {

// The shortest decimal text that reads back as the same double; whole numbers
// keep one zero after the point ("10.0", "12.5", "0.0001",
// "0.30000000000000004"). Magnitudes below 1e-4 or from 1e16 up are written
// with an exponent ("1e-05", "1e+16"); infinities and NaN read "inf", "-inf"
// and "nan".
std::string ShortestDecimal(double value);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_NUMBER_FORMAT_H_
