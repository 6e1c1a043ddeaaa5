// Programs and lattices that the tests of proofs share.
#pragma once

#include "complete/program/opt_reader.h"
#include "complete/proof/cut_vectors.h"
#include "complete/proof/derivation.h"
#include "support.h"

namespace latbox::complete::testing {

inline Program programOf(const std::string& text) {
  return readProgram(text, "p.opt");
}

// 4 x1 + 5 x2 + 7 x3 = 12 in 0..3: (0, 1, 1) and (3, 0, 0).
inline const char* const TWELVE = "[ ] [ ] [ [ 4 5 7 ] ] [ 12 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 3 3 3 ]";

// Of that program as docs/proof.md writes it down by hand.
inline proof::ProofLattice latticeOfTwelve() {
  proof::ProofLattice lattice;
  lattice.equations = {0};
  lattice.box.fixed.resize(3);
  lattice.box.variables = {0, 1, 2};
  lattice.box.point = vectorOf({0, 1, 1});
  lattice.box.basis = {vectorOf({-3, 1, 1}), vectorOf({2, -3, 1})};
  lattice.box.low = vectorOf({0, 0, 0});
  lattice.box.high = vectorOf({3, 2, 1});
  lattice.dual = {vectorOf({-1, -1, -1}), vectorOf({1, 1, 2})};
  lattice.orthogonal = {vectorOf({4, 5, 7})};
  return lattice;
}

inline proof::CutVectors cutsOfTwelve() {
  return {vectorOf({0, 0, 0}), {{vectorOf({-1, 1, 1}), 1024, {}}, {vectorOf({0, -1, 1}), 1024, {}}}};
}

// A system without objective rows; rows as in support.h.
inline proof::System madeOf(std::vector<Range> box, std::vector<Row> rows) {
  proof::System system;
  system.box = std::move(box);
  for (Row& row : rows) {
    system.rows.push_back(std::move(row.a));
    system.ranges.push_back(std::move(row.range));
  }
  return system;
}

inline proof::Step upper(proof::Form form, long q, std::vector<proof::Term> terms) {
  return {proof::Step::Kind::UPPER, form, q, 0, std::move(terms)};
}

inline proof::Step lower(proof::Form form, long q, std::vector<proof::Term> terms) {
  return {proof::Step::Kind::LOWER, form, q, 0, std::move(terms)};
}

inline proof::Step classOf(proof::Form form, long q, long modulus, std::vector<proof::Term> terms) {
  return {proof::Step::Kind::CLASS, form, q, modulus, std::move(terms)};
}

inline proof::Form variable(std::size_t j) {
  return {proof::Form::Kind::VARIABLE, j};
}

inline proof::Form row(std::size_t i) {
  return {proof::Form::Kind::ROW, i};
}

inline std::pair<Integer, Integer> endsOf(const Range& range) {
  return {range.low.value(), range.high.value()};
}

}  // namespace latbox::complete::testing
