// Lattices for tests, from the text of a .opt file, in either number type.
#pragma once

#include <memory>
#include <string>

#include "driver/events.h"
#include "lattice/lattice.h"
#include "program/generation.h"
#include "support/draws.h"
#include "support/program.h"

namespace latbox::testing {

template <class T>
using LatticePointer = std::unique_ptr<Lattice<T, dbl_t>>;

// The program read into `program`, nothing prepared.
template <class T>
LatticePointer<T> unpreparedLattice(const std::string& text) {
  auto lattice = std::make_unique<Lattice<T, dbl_t>>();
  lattice->events = &runEvents<T>();
  lattice->program = programOf<T>(text);
  lattice->params.verb.set(0);
  lattice->program.optFile.clear();
  return lattice;
}

// Prepared, but not generated.
template <class T>
LatticePointer<T> preparedLattice(const std::string& text) {
  auto lattice = unpreparedLattice<T>(text);
  prepare(*lattice, true, false);
  return lattice;
}

// The whole way from the text to the lattice.
template <class T>
LatticePointer<T> latticeOf(const std::string& text) {
  auto lattice = preparedLattice<T>(text);
  prepareLattice(*lattice);
  return lattice;
}

// The lattice vector of a point of the program, by its text.
template <class T>
Vector<T> latticeVector(const Lattice<T, dbl_t>& lattice, const std::string& point) {
  Vector<T> v;
  lattice.opt2lat(Vector<T>(point), v, false);
  return v;
}

}  // namespace latbox::testing
