#include "numbers/residues.h"

#include "numbers/number.h"

namespace latbox {
namespace {

template <class T>
bool residueOf(const T& x, std::uint64_t p, std::uint64_t& residue, Fractions fractions) {
  unsigned long long value = 0;
  if (!modulo(x, p, value) && (fractions == Fractions::refused || !modulo(QQ(x), p, value))) return false;
  residue = value;
  return true;
}

}  // namespace

template <class T>
bool residuesOf(const Vector<T>& v, std::uint64_t p, std::vector<std::uint64_t>& residues,
                Fractions fractions) {
  residues.resize(static_cast<std::size_t>(v.MN) + 1);
  for (long j = 1; j <= v.MN; ++j)
    if (!residueOf(v.data[j], p, residues[static_cast<std::size_t>(j)], fractions)) return false;
  return true;
}

template <class T>
bool residuesOf(const Matrix<T>& m, std::uint64_t p, ModularMatrix& residues) {
  residues = ModularMatrix(m.M, m.N);
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.N; ++j)
      if (!residueOf(m.rows[i].data[j], p, residues.at(i, j), Fractions::refused)) return false;
  return true;
}

#define LATBOX_INSTANTIATE(T)                                                                        \
  template bool residuesOf(const Vector<T>&, std::uint64_t, std::vector<std::uint64_t>&, Fractions); \
  template bool residuesOf(const Matrix<T>&, std::uint64_t, ModularMatrix&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)
#undef LATBOX_INSTANTIATE

}  // namespace latbox
