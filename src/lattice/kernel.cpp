// The kernel of the equations: reduction under ever greater weights on the equation coordinates, until the
// vectors with zero equation values stand apart (K. Aardal, C. A. J. Hurkens, A. K. Lenstra, "Solving a
// system of linear Diophantine equations with lower and upper bounds on the variables", 2000).
#include <memory>

#include "lattice/lattice.h"
#include "numbers/number.h"

namespace latbox {

namespace {

template <class T>
class KernelReduction {
 public:
  KernelReduction(Lattice<T, dbl_t>& work, long equations) : W_(work), e_(equations), m_(work.rank) {}

  void run() {
    Vector<T> before(e_), heavy(e_);
    for (long i = 1; i <= e_; ++i) before[i] = W_.scaleFactor[i];
    T scale(10 * e_);
    while (m_ > e_) {
      for (long i = 1; i <= e_; ++i) heavy[i] = scale;
      W_.setFirstScales(heavy);
      W_.sortBasis(m_);
      W_.lll(1, m_, m_);
      W_.sortBasis(m_);
      W_.checkConsistency(true, true);
      parkKernel();
      scale *= T(10);
    }
    bringKernelForward();
    W_.setFirstScales(before);
  }

 private:
  Lattice<T, dbl_t>& W_;
  long e_;
  long m_;  // rows not known to be in the kernel: 1..m

  bool inKernel(long row) const {
    for (long i = 1; i <= e_; ++i)
      if (!isZero(W_.B[row][i])) return false;
    return true;
  }

  // These exchanges happen behind the consistency check, so they are recorded whether transformations are
  // kept in step or not: the product of the recorded matrices has to give the final order.
  void exchange(long i, long j, bool keepStatus) {
    if (i != j) W_.recordSwap(i, j);
    W_.swapBase(i, j, keepStatus);
  }

  void parkKernel() {
    for (long row = 1; row <= m_;) {
      if (!inKernel(row)) {
        ++row;
        continue;
      }
      for (long t = row; t < m_; ++t) exchange(t, t + 1, t > row);
      --m_;
    }
  }

  void bringKernelForward() {
    for (long i = 1; i <= W_.rank - e_; ++i) exchange(i, W_.rank - i + 1, i > 1);
  }
};

}  // namespace

template <class T, class F>
SerializableArray<Matrix<T>> Lattice<T, F>::kernelReduce() {
  const auto work = std::make_unique<Lattice<T, F>>();
  work->copyFrom(*this, false);
  work->params.verb.set(0);
  KernelReduction<T>(*work, this->Ag.M).run();
  copyFrom(*work, true);
  return this->TT;
}

template SerializableArray<Matrix<dbl_t>> Lattice<dbl_t, dbl_t>::kernelReduce();
template SerializableArray<Matrix<QQ>> Lattice<QQ, dbl_t>::kernelReduce();

}  // namespace latbox
