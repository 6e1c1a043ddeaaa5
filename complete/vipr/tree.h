// The tree of a proof as splits on whole forms.
//
// A node has chosen lambda_i = D_i (v - x0) for the levels above; here that are two assumptions on the whole
// form D_i v, at least and at most a value. A vector W over the columns that is orthogonal to the rows of the
// levels below is a sum of the forms of the levels above, each times W K_i, and of equations; so a cut |W u|
// > |W| is a linear combination of those assumptions, the equations, and the ends of the columns, that says 0
// <= less than 0. Where W K_t > 0 it needs of lambda_t only that it is at least its value, and refutes all
// further ones with it. Of a node's children the values between two such ends are refuted one by one, and all
// are joined by splits from one end to the other.
#pragma once

#include <atomic>

#include "complete/proof/cut_vectors.h"
#include "complete/vipr/ranges.h"

namespace latbox::complete::vipr {

class Tree {
 public:
  // Ranges that have replayed the derivation of the lattice; all outlive this.
  Tree(Ranges& ranges, const proof::Derivation& derivation, const proof::ProofLattice& lattice,
       const proof::CutVectors& cuts);

  // A line that is a contradiction: no point counts. Nothing: the tree has more than `most` nodes. Throws
  // NoProof when `stop` is set, std::logic_error if a point counts after all.
  std::optional<std::size_t> refute(unsigned long most, const std::atomic<bool>& stop);

 private:
  // How a value of lambda_t and all on one side of it are refuted.
  struct Side {
    Integer value;
    std::size_t line = 0;
    std::size_t assumption = 0;
  };
  // How one value is.
  struct Between {
    std::size_t line = 0;
    std::size_t less = 0;
    std::size_t greater = 0;
  };
  struct Children {
    std::optional<Side> below;
    std::optional<Side> above;
    std::map<Integer, Between> between;
    // The node itself is refuted.
    std::optional<std::size_t> node;
  };
  // A vector of which the points of the node have more than they can.
  struct Cut {
    IntegerVector w;
    int sign = 1;
  };

  // More nodes than wanted.
  struct TooLarge {};

  void listColumns();
  void narrowColumn(std::size_t c, EndLines& ends);
  void listReach();
  IntegerVector overAll(const IntegerVector& w) const;
  std::vector<std::pair<std::size_t, Rational>> rowsOf(const IntegerVector& w, std::size_t level) const;

  std::size_t refuteChildren(std::size_t t);
  void tryChild(Children& children, std::size_t t, const Integer& value);
  std::size_t join(const Children& children);
  std::optional<Cut> cutOf(std::size_t t, const Integer& value);
  std::optional<Cut> excess(const IntegerVector& w, std::size_t t) const;
  std::size_t refuteLeaf();
  std::size_t refuteNorm(const IntegerVector& z);
  std::size_t refuteBy(const Cut& cut, const EndLines* own, std::size_t t);
  std::size_t assume(std::size_t t, const Integer& value, Sense sense);
  Integer valueOf(const IntegerVector& w, std::size_t t) const;
  Integer sizeOf(const IntegerVector& w) const;

  Ranges& ranges_;
  const proof::Derivation& derivation_;
  const proof::ProofLattice& lattice_;
  const proof::CutVectors& cuts_;
  std::vector<EndLines> columns_;
  // Centred: 2 point - low - high, and the widths.
  IntegerVector start_;
  IntegerVector widths_;
  // D_i v over all variables, and what it is at the point.
  std::vector<FormPointer> forms_;
  IntegerVector constants_;
  IntegerVector least_;
  IntegerVector most_;
  // Variables whose columns make a square of the equations.
  std::vector<std::size_t> pivots_;
  IntegerMatrix square_;

  unsigned long mostNodes_ = 0;
  const std::atomic<bool>* stop_ = nullptr;
  unsigned long nodes_ = 0;
  // Of the way to a node.
  IntegerVector lambda_;
  std::vector<EndLines> assumptions_;
  IntegerMatrix sums_;
};

}  // namespace latbox::complete::vipr
