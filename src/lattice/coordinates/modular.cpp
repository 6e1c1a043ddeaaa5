#include "lattice/coordinates/modular.h"

#include "numbers/residues.h"

namespace latbox {

namespace {

using Index = std::size_t;

QQ exactInteger(std::uint64_t value) {
  return QQ(static_cast<long long>(value));
}

}  // namespace

template <class T>
ModularForm::ModularForm(const Matrix<T>& rows) {
  ModularMatrix residues;
  for (Index k = 0; k < MODULAR_PRIMES.size(); ++k) {
    exists_ =
        residuesOf(rows, MODULAR_PRIMES[k], residues) && factor_[k].factorise(residues, MODULAR_PRIMES[k]);
    if (!exists_) return;
  }
}

template <class T>
Answer ModularForm::solve(const Vector<T>& v, Vector<QQ>& x) {
  for (Index k = 0; k < MODULAR_PRIMES.size(); ++k) {
    if (!residuesOf(v, MODULAR_PRIMES[k], vector_)) return Answer::unsure;
    if (!factor_[k].solve(vector_, solution_[k])) return Answer::no;
  }
  for (long i = 1; i <= x.MN; ++i) x.data[i] = lift(static_cast<Index>(i));
  return Answer::yes;
}

// The integer of least magnitude with the residues of coordinate i, digit by digit in the mixed base of the
// primes (H. L. Garner, "The residue number system", 1959).
QQ ModularForm::lift(Index i) const {
  std::array<std::uint64_t, MODULAR_PRIMES.size()> digit{};
  for (Index k = 0; k < digit.size(); ++k) {
    const std::uint64_t p = MODULAR_PRIMES[k];
    std::uint64_t rest = solution_[k][i];
    for (Index j = 0; j < k; ++j) {
      rest = subtractModulo(rest, digit[j] % p, p);
      rest = multiplyModulo(rest, inverseModulo(MODULAR_PRIMES[j] % p, p), p);
    }
    digit[k] = rest;
  }
  QQ value, product(1);
  for (Index k = 0; k < digit.size(); ++k) {
    QQ::addmul(value, product, exactInteger(digit[k]));
    product *= exactInteger(MODULAR_PRIMES[k]);
  }
  if (value + value > product) value -= product;
  return value;
}

#define LATBOX_INSTANTIATE(T)                          \
  template ModularForm::ModularForm(const Matrix<T>&); \
  template Answer ModularForm::solve(const Vector<T>&, Vector<QQ>&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
