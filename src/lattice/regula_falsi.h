// The root of a monotonous function by the rule of false position.
#pragma once

#include <functional>

namespace latbox {

inline constexpr long LOOP_LIMIT = 1'000'000'000;

// x in [0, 1] with f(x) = y. Two successive values that agree within EPS, relative, end the search. After
// `limit` steps a line on the error stream tells so, and the last x is the result. The points at which QQ
// evaluates f are rounded to dbl_t: their digits would double with each step.
// Requires: f is monotonous in [0, 1], f(0) < y < f(1).
// Fails with: "f(a)*f(b) >= 0!" when f(0) and f(1) lie on the same side of y.
template <class T>
T regula_falsi(const std::function<T(const T&)>& f, const T& y, long limit = LOOP_LIMIT);

}  // namespace latbox
