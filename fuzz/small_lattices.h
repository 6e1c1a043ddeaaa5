// Programs for the readers of the files that belong to a program.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "lattice/lattice.h"
#include "program/generation.h"
#include "refusal.h"
#include "support/program_text.h"

namespace latbox::fuzzing {

// Bounded variables; a target; free variables; digits, a fixed variable and a finite target.
inline constexpr std::array<const char*, 4> PROGRAMS = {
    testing::SMALL, testing::SMALL_TARGET,
    "[ -inf ] [ [ 2 3 ] ] [ [ 3 -5 ] ] [ 1 ] [ ] [ ] [ ] [ 0 0 ] [ 0 -inf ] [ inf inf ]",
    "[ 3 inf ] [ [ 1 2 1 ] [ 1 0 -1 ] ] [ ] [ ] [ [ 1 1/2 1 ] ] [ -5 ] [ 4 ] [ 1 0 0 ] [ 0 1 -2 ] "
    "[ 2 1 5 ]"};

template <class T>
using LatticePointer = std::unique_ptr<Lattice<T, dbl_t>>;

// A lattice with program number `which`; generated, if asked for.
template <class T>
LatticePointer<T> latticeOf(std::size_t which, bool generated) {
  auto lattice = std::make_unique<Lattice<T, dbl_t>>();
  lattice->program = testing::programOf<T>(PROGRAMS[which % PROGRAMS.size()]);
  lattice->program.optFile.clear();
  lattice->params.sol.set(0);
  if (!generated) return lattice;
  prepare(*lattice, true, false);
  prepareLattice(*lattice);
  return lattice;
}

// A copy of what latticeOf gives, made once for each program.
template <class T, bool generated>
LatticePointer<T> freshLattice(std::size_t which) {
  static std::array<LatticePointer<T>, PROGRAMS.size()> made;
  if (!made[which]) made[which] = latticeOf<T>(which, generated);
  return std::make_unique<Lattice<T, dbl_t>>(*made[which]);
}

}  // namespace latbox::fuzzing
