// Divisors of a common range, for widths that may grow until they fit it.
#pragma once

namespace latbox {

// The smallest divisor of `n` that is not below `least`. n is factorised: completely below 2^61, above that
// by trial division, where a large rest stands as one factor and a divisor hidden in it is overlooked.
// Requires: whole numbers, 1 <= least <= n.
// Ensures: the result divides n in any case.
template <class T>
T divisorFrom(const T& n, const T& least);

}  // namespace latbox
