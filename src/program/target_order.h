// Which of two points has the smaller target norm, by the program as it was read and not by what rounding
// makes of it.
#pragma once

#include "model/tessik.h"

namespace latbox {

// The sign of a - b, a and b being the target norms of the points x and y of the prepared `program` (slacks
// and deviations included). In dbl_t a difference within EPS may be rounding or an improvement: then both
// norms are computed in exact arithmetic, with the points on their decimal grids. 0 where a point lies on no
// grid, so that nothing can be told.
template <class T>
int compareTargetNorms(const Tessik<T>& program, const Vector<T>& x, const T& a, const Vector<T>& y,
                       const T& b);

}  // namespace latbox
