// The coefficients of a point in a basis, read from its variables.
//
// Kernel rows K and others C that make a unimodular matrix have an inverse whose first columns are whole
// vectors D with D_i K_j = 1 for i = j and 0 otherwise. With basis = T K the same holds of the inverse of T
// transposed, times them.
#pragma once

#include "complete/jobs/lattice_text.h"
#include "complete/piece.h"

namespace latbox::complete::jobs {

// Throws ReductionFailure.
PieceLattice withDual(BoxLattice lattice);

// Of points of one lattice. It must outlive this.
class Coefficients {
 public:
  explicit Coefficients(const PieceLattice& lattice);

  // Of whole variables of a point, whether it belongs to one of the pieces. All further levels than they name
  // are not looked at.
  bool isIn(const std::vector<Piece>& pieces, const IntegerVector& z) const;
  Integer at(std::size_t i, const IntegerVector& z) const;

 private:
  // What is known of a point.
  struct Known {
    // Those of its coefficients that were asked for.
    std::vector<std::optional<Integer>> coefficients;
    // Its free variables; empty: words do not hold them, or sums of them.
    std::vector<long> words;
  };

  std::vector<long> wordsOf(const IntegerVector& z) const;
  Integer at(std::size_t i, const IntegerVector& z, const std::vector<long>& words) const;
  bool isIn(const Piece& piece, const IntegerVector& z, Known& known) const;
  void listShort();

  const PieceLattice& lattice_;
  // Of the lattice's point.
  IntegerVector own_;
  // The dual where words hold every sum over the box; else empty.
  std::vector<std::vector<long>> words_;
};

}  // namespace latbox::complete::jobs
