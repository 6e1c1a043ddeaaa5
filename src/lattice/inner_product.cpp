#include "lattice/inner_product.h"

#include "numbers/number.h"

namespace latbox {

namespace {

void productsWithPredecessors(const Matrix<dbl_t>& B, long i, dbl_t* result) {
  const dbl_t* const b = B.rows[i].data;
  const long n = B.rows[i].MN;
  for (long j = 1; j < i; ++j) {
    const dbl_t* const other = B.rows[j].data;
    dbl_t sum = 0;
    for (long k = 1; k <= n; ++k) sum += other[k] * b[k];
    result[j] = sum;
  }
}

void productsWithPredecessors(const Matrix<QQ>& B, long i, dbl_t* result) {
  const Vector<QQ>& b = B.rows[i];
  thread_local QQ product;
  for (long j = 1; j < i; ++j) result[j] = 0;
  for (long k = 1; k <= b.MN; ++k) {
    if (b.data[k].isExactZero()) continue;
    for (long j = 1; j < i; ++j) {
      const QQ& other = B.rows[j].data[k];
      if (other.isExactZero()) continue;
      QQ::mul(product, other, b.data[k]);
      result[j] += toDouble(product);
    }
  }
}

}  // namespace

template <class T, class F>
void innerProducts(const Matrix<T>& B, long i, F* result) {
  productsWithPredecessors(B, i, result);
}

template <>
void squaredLength(const Vector<dbl_t>& b, dbl_t& result) {
  dbl_t sum = 0;
  for (long k = 1; k <= b.MN; ++k) sum += b.data[k] * b.data[k];
  result = sum;
}

template <>
void squaredLength(const Vector<QQ>& b, QQ& result) {
  QQ sum;
  for (long k = 1; k <= b.MN; ++k)
    if (!b.data[k].isExactZero()) QQ::addmul(sum, b.data[k], b.data[k]);
  result = sum;
}

template void innerProducts(const Matrix<dbl_t>&, long, dbl_t*);
template void innerProducts(const Matrix<QQ>&, long, dbl_t*);

}  // namespace latbox
