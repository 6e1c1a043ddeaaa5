#include "numbers/tolerance.h"

#include <limits>

namespace latbox {

dbl_t withoutRounding(dbl_t x) {
  const dbl_t nearest = roundNearest(x);
  const dbl_t band = 8 * std::numeric_limits<dbl_t>::epsilon() * abs(x);
  return abs(x - nearest) <= band ? nearest + 0 : x;
}

void shorten(QQ& x) {
  roundDigits(x, PRECISION_DIGITS);
  x.normalize();
}

}  // namespace latbox
