// Values that cross from one number type to the other and must be the same on the other side.
#pragma once

#include "lib/exceptions.h"
#include "numbers/matrix.h"
#include "numbers/number.h"
#include "numbers/vector.h"

namespace latbox {

// dbl_t from QQ: the strict conversion, and the result has to convert back to its source; throws
// PrecisionException with "Precision lost during conversion" otherwise.
inline constexpr const char* CONVERSION_LOST = "Precision lost during conversion";
inline void convertValue(const QQ& from, dbl_t& to) {
  if (!convertStrict(from, to)) throw PrecisionException(CONVERSION_LOST);
}
// QQ from dbl_t: through the text of 17 digits, so a tenth stays a tenth.
inline void convertValue(dbl_t from, QQ& to) {
  to = QQ(from);
}

template <class T, class U>
T converted(const U& from) {
  T to{};
  convertValue(from, to);
  return to;
}

// Element by element, into the size of the source.
template <class T, class U>
void convertVector(const Vector<U>& from, Vector<T>& to) {
  to.assignConverted(from, converted<T, U>);
}

template <class T, class U>
void convertMatrix(const Matrix<U>& from, Matrix<T>& to) {
  to.assignConverted(from, converted<T, U>);
}

}  // namespace latbox
