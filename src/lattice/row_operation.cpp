#include "lattice/row_operation.h"

#include <cmath>

#include "lib/exceptions.h"
#include "numbers/number.h"

namespace latbox {

namespace {

constexpr const char* OVERFLOW_TEXT = "vector precisison overflow";
constexpr dbl_t SAFE = 1e9L;

[[gnu::cold]] void refuse(const Vector<dbl_t>& row) {
  for (long i = 1; i <= row.MN; ++i) checkPrecision(row.data[i], OVERFLOW_TEXT);
  // The gate lets infinities pass, for bounds may be infinite. An entry of a basis may not.
  throw PrecisionException(OVERFLOW_TEXT);
}

}  // namespace

template <>
void subtractChecked(Vector<dbl_t>& row, const dbl_t& q, const Vector<dbl_t>& other) {
  if (row.MN != other.MN) fail("Vector: dimension mismatch2");
  dbl_t* const a = row.data;
  const dbl_t* const b = other.data;
  const dbl_t factor = q;
  bool safe = true;
  for (long i = 1; i <= row.MN; ++i) {
    a[i] -= factor * b[i];
    safe &= std::fabs(a[i]) <= SAFE;
  }
  if (!safe) [[unlikely]]
    refuse(row);
}

template <>
void subtractChecked(Vector<QQ>& row, const QQ& q, const Vector<QQ>& other) {
  if (row.MN != other.MN) fail("Vector: dimension mismatch2");
  for (long i = 1; i <= row.MN; ++i)
    if (!other.data[i].isExactZero()) QQ::submul(row.data[i], q, other.data[i]);
}

template <class T>
T supNorm(const Vector<T>& row) {
  T largest(0);
  for (long i = 1; i <= row.MN; ++i) {
    const T a = abs(row.data[i]);
    if (a > largest) largest = a;
  }
  return largest;
}

template <class T>
T supNormOfDifference(const Vector<T>& row, const T& q, const Vector<T>& other) {
  T largest(0);
  for (long i = 1; i <= row.MN; ++i) {
    const T a = abs(row.data[i] - q * other.data[i]);
    if (a > largest) largest = a;
  }
  return largest;
}

template dbl_t supNorm(const Vector<dbl_t>&);
template QQ supNorm(const Vector<QQ>&);
template dbl_t supNormOfDifference(const Vector<dbl_t>&, const dbl_t&, const Vector<dbl_t>&);
template QQ supNormOfDifference(const Vector<QQ>&, const QQ&, const Vector<QQ>&);

}  // namespace latbox
