// Coordinates by residues modulo primes near 2^61. No solution there proves that there is none at all, which
// settles the vectors that are not in the lattice at the speed of machine words.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "lattice/coordinates/combination.h"
#include "lib/modular.h"
#include "numbers/matrix.h"
#include "numbers/qq.h"

namespace latbox {

class ModularForm {
 public:
  // The rows modulo each prime, factorised.
  template <class T>
  explicit ModularForm(const Matrix<T>& rows);
  // False where an entry has no residue or the rows are dependent modulo a prime.
  bool exists() const { return exists_; }

  // `yes`: x holds the integers of least magnitude with the residues found, which the caller has to confirm.
  // `unsure`: v has no residues.
  // Ensures: with `no`, that v has no coordinates; with `yes`, right ones up to half the product of the
  // primes.
  template <class T>
  Answer solve(const Vector<T>& v, Vector<QQ>& x);

 private:
  bool exists_ = false;
  std::array<ModularFactor, MODULAR_PRIMES.size()> factor_;
  std::array<std::vector<std::uint64_t>, MODULAR_PRIMES.size()> solution_;
  std::vector<std::uint64_t> vector_;

  QQ lift(std::size_t i) const;
};

}  // namespace latbox
