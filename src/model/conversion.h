// Stars that cross from one number type to the other.
#pragma once

#include "model/star.h"
#include "numbers/conversion.h"

namespace latbox {

// Every field of a star. Throws PrecisionException with "Precision lost during conversion" where a value, put
// back into its own type, is another one beyond the system's tolerance: a solution must never change on the
// way.
template <class T, class U>
Star<T> convertedStar(const Star<U>& from);

}  // namespace latbox
