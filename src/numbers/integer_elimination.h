// Gaussian elimination of whole numbers without fractions.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// Sets `rank` to the number of pivots that forwardEliminate(M, ..., false) finds, without a common divisor on
// the way. False, with `rank` unset, where M has an entry that is no whole number, or where the tolerance
// leaves an entry standing: then forwardEliminate must decide.
bool wholeRank(const Matrix<QQ>& M, long& rank);

}  // namespace latbox
