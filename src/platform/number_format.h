// How the kit writes numbers into its lines and labels.

#ifndef OBOLO_PLATFORM_NUMBER_FORMAT_H_
#define OBOLO_PLATFORM_NUMBER_FORMAT_H_

#include <string>

namespace obolo {

// The shortest decimal text that reads back as the same double; whole numbers
// keep one zero after the point ("10.0", "12.5", "0.30000000000000004").
// Very large or small magnitudes use an exponent where that is shorter
// ("1e+16"); infinities and NaN read "inf", "-inf" and "nan".
std::string ShortestDecimal(double value);

}  // namespace obolo

#endif  // OBOLO_PLATFORM_NUMBER_FORMAT_H_
