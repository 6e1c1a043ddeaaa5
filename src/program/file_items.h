// What the readers and writers of the .sol and .lat files share.
#pragma once

#include <istream>
#include <string>

#include "numbers/matrix.h"

namespace latbox {

// A stream that runs out of memory swallows the exception and goes bad, and half a file would pass for a
// whole one, in reading as in writing. From now on the exception comes through.
inline void throwOnBadStream(std::ios& stream) {
  stream.exceptions(std::ios::badbit);
}

// One number in any form that the system writes, the infinities and exponents included, in either number
// type. White space and comments before it are skipped.
// Throws: in dbl_t, FatalPrecisionException where a value is beyond 10^18: its digits would be lost.
// Fails with: "QQ: parse error1" where none stands, the other texts of the number's form, and "Vector: bad
// input" on an absurd exponent.
template <class T>
T takeNumber(std::istream& in);

// One whole number of at most 18 digits.
// Fails with: "QQ: parse error1".
long takeInteger(std::istream& in);

// takeNumber's test on what a vector has read.
template <class T>
void requireExact(const Vector<T>& v);

// For a basis whose coordinates go up to `range`: standard precision is written and converted with 17 digits,
// and beyond a range of 10^6 multiples of a fraction such as 4/3 would lose places that the membership test
// looks at, so that a lattice that is read back would not hold the solutions any more. Exact arithmetic
// writes such a fraction as it is.
// Throws: in dbl_t, PrecisionException with "B_save overflow".
void requireTextual(const Matrix<dbl_t>& basis, dbl_t range);
inline void requireTextual(const Matrix<QQ>&, const QQ&) {}

// Replaces the file as a whole, held off from signals. Where that is not possible, "*** ", the path and the
// reason go to standard error, unless the last write to the path failed too, and the result is false.
bool writeOutput(const std::string& path, const std::string& text);

}  // namespace latbox
