// The one uniform draw of the search, on the library's generator, so that a run repeats.
#pragma once

#include <concepts>

namespace latbox {

// A uniformly distributed integer in a..b. Equal bounds draw nothing. Any range that a long can hold.
// Fails with: "invalid input for rand_eq" when b < a.
long rand_eq(long a, long b);

// The same for bounds of type dbl_t or QQ: one draw for a range of any size.
// Requires: the bounds are whole numbers.
template <class T>
requires(!std::integral<T>) T rand_eq(const T& a, const T& b);

}  // namespace latbox
