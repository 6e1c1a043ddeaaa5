// Lattices for tests, from the text of a .opt file, in either number type.
#pragma once

#include <memory>
#include <string>

#include "lattice/lattice.h"
#include "support/program.h"

namespace latbox::testing {

template <class T>
using LatticePointer = std::unique_ptr<Lattice<T, dbl_t>>;

// The program read into `program`, nothing prepared.
template <class T>
LatticePointer<T> unpreparedLattice(const std::string& text) {
  auto lattice = std::make_unique<Lattice<T, dbl_t>>();
  lattice->program = programOf<T>(text);
  lattice->params.verb.set(0);
  lattice->program.optFile.clear();
  return lattice;
}

// Prepared, but not generated.
template <class T>
LatticePointer<T> preparedLattice(const std::string& text) {
  auto lattice = unpreparedLattice<T>(text);
  lattice->prepare(true, false);
  return lattice;
}

// The whole way from the text to the lattice.
template <class T>
LatticePointer<T> latticeOf(const std::string& text) {
  auto lattice = preparedLattice<T>(text);
  lattice->prepareLattice();
  return lattice;
}

// The lattice vector of a point of the program, by its text.
template <class T>
Vector<T> latticeVector(const Lattice<T, dbl_t>& lattice, const std::string& point) {
  Vector<T> v;
  lattice.opt2lat(Vector<T>(point), v, false);
  return v;
}

// 1 <= x1 + x2 <= 3 with x1, x2 in 0..4.
inline constexpr const char* SMALL = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

// The same with the target x1 - x2, to be minimised.
inline constexpr const char* SMALL_TARGET =
    "[ -inf ] [ [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

// A linear congruential sequence (D. E. Knuth, MMIX), so that every run sees the same cases.
class Draws {
 public:
  explicit Draws(unsigned long long seed) : state_(seed) {}
  long next(long low, long high) {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return low + static_cast<long>((state_ >> 33) % static_cast<unsigned long long>(high - low + 1));
  }

 private:
  unsigned long long state_;
};

}  // namespace latbox::testing
