#include "lattice/inner_product.h"

#include <vector>

#include "numbers/number.h"

namespace latbox {

namespace {

// The entries of a row that are not zero. Leaving the others out changes no sum, not even in its last bit.
class NonZeros {
 public:
  void take(const Vector<dbl_t>& b) {
    entries_.clear();
    entries_.reserve(static_cast<std::size_t>(b.MN));
    for (long k = 1; k <= b.MN; ++k)
      if (b.data[k] != 0) entries_.push_back({b.data[k], k});
  }

  dbl_t product(const dbl_t* other) const {
    dbl_t sum = 0;
    for (const Entry& e : entries_) sum += other[e.at] * e.value;
    return sum;
  }

  // Four rows side by side: each sum keeps its order, and none waits for its own last addition. In long
  // double this is worth a third of the time of a reduction; more rows no longer fit the registers.
  void productsWithFour(const Vector<dbl_t>* rows, dbl_t* result) const {
    const dbl_t *const a = rows[0].data, *const b = rows[1].data;
    const dbl_t *const c = rows[2].data, *const d = rows[3].data;
    dbl_t sumA = 0, sumB = 0, sumC = 0, sumD = 0;
    for (const Entry& e : entries_) {
      sumA += a[e.at] * e.value;
      sumB += b[e.at] * e.value;
      sumC += c[e.at] * e.value;
      sumD += d[e.at] * e.value;
    }
    result[0] = sumA, result[1] = sumB, result[2] = sumC, result[3] = sumD;
  }

 private:
  struct Entry {
    dbl_t value;
    long at;
  };
  std::vector<Entry> entries_;
};

void productsWithPredecessors(const Matrix<dbl_t>& B, long i, dbl_t* result) {
  thread_local NonZeros entries;
  entries.take(B.rows[i]);
  long j = 1;
  for (; j + 3 < i; j += 4) entries.productsWithFour(&B.rows[j], result + j);
  for (; j < i; ++j) result[j] = entries.product(B.rows[j].data);
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
