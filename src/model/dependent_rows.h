// Removal of dependent rows from a matrix without losing any vector that its rows span over the integers.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// Removes dependent rows in place such that the integer span of the rows stays the same; on return the rows
// are linearly independent. A row that is an integer combination of the rows before it simply goes (the last
// row takes its place); where the dependency is only rational, the rows that take part are rewritten. Entries
// are finite. In dbl_t throws PrecisionException with "factor overflow" or "row overflow". Fails with
// "Coordinates of dependent row could not be computed!", "Coordinate inconsistency - index is too big!" and
// "Dependent row could not be eliminated!" when the arithmetic contradicts itself.
template <class T>
void eliminateDependentRows(Matrix<T>& M);

}  // namespace latbox
