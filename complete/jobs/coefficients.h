// The coefficients of a point in a basis, read from its variables.
//
// Kernel rows K and others C that make a unimodular matrix have an inverse whose first columns are whole
// vectors D with D_i K_j = 1 for i = j and 0 otherwise. With basis = T K the same holds of the inverse of T
// transposed, times them.
#pragma once

#include "complete/jobs/lattice_text.h"
#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

// Throws ReductionFailure.
PieceLattice withDual(BoxLattice lattice);

// Of points of one lattice. It must outlive this.
//
// Where the box proves that words hold every coefficient and each sum on the way to it, words do it for
// points in the box; for others, and elsewhere, GMP.
class Coefficients {
 public:
  // Room for the words of one point after another.
  class Room {
   private:
    friend Coefficients;
    // Its free variables.
    std::vector<long> free;
    // Those of its coefficients that were asked for.
    std::vector<std::optional<long>> known;
  };

  explicit Coefficients(const PieceLattice& lattice);

  // Of whole variables of a point, whether it belongs to one of the pieces. All further levels than they name
  // are not looked at.
  bool isIn(const std::vector<Piece>& pieces, const IntegerVector& z) const;
  Integer at(std::size_t i, const IntegerVector& z) const;

  // The point with these words, which belong() asks about, is now the one in the room; false: it takes GMP.
  bool enter(Room& room, const std::vector<long>& words) const;
  bool belong(const std::vector<Piece>& pieces, Room& room) const;

 private:
  long at(std::size_t i, const Room& room) const;
  bool listShort();

  const PieceLattice& lattice_;
  // Of the lattice's point.
  IntegerVector own_;
  // The box, the dual, and the coefficients of the lattice's point.
  std::vector<std::pair<long, long>> shortBox_;
  std::vector<std::vector<long>> shortDual_;
  std::vector<long> shortOwn_;
  bool isShort_;
};

}  // namespace latbox::complete::jobs
