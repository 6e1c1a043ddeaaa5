// A first point by pruned passes.
//
// A pass makes a basis (short_basis.h), leaves out the nodes that are long for their level (pruning.h), and
// walks through the rest: for a market split of rank 71 a tenth of the points and one node in sixty thousand,
// in a fifth of a second. What a pass does not find says nothing; another one has another basis, for
// which the points lie elsewhere (Gama, Nguyen, Regev, Lattice enumeration using extreme pruning, 2010).
// After a few that take no time, a stage is as many passes as should bring two points with the cheapest caps.
// If it brings none, the model of the tree is wrong or there is no point, and the passes of the next stage
// leave out less, until all have cost what a part of the complete search would.
//
// Nothing here is proven, and nothing needs to be: points are verified, and no verdict follows from passes.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "complete/lattice/short_basis.h"
#include "complete/tree/pruning.h"
#include "complete/tree/search.h"

namespace latbox::complete {

// As boxLatticeOf(), reduced as for a pass where its numbers are short: in a fraction of the time, for a
// search that is short too.
std::optional<BoxLattice> roughLatticeOf(const IntegerProgram& program);

class Passes {
 public:
  // Lattice and seed determine everything, the lattice alone all but the bases of the passes. Its basis need
  // not be reduced.
  Passes(BoxLattice lattice, unsigned long seed);

  // False: there are no passes from this stage on. They do not pay where trees are small, or have cost
  // enough, and there are none where numbers are long.
  bool hasStage(std::size_t stage);
  // Candidates of all stages that are known, estimated.
  double cost() const { return cost_; }

  // Makes the passes of a stage, control.threads at once, from this number on. Tells now and then, by the
  // calling thread, that all below another number are made. True: all are. False: stopped by the visitor or
  // the control. A point may be visited more than once. Requires that the stage is there.
  bool make(std::size_t stage, unsigned long begin, const std::function<void(unsigned long)>& tell,
            Visitor& visitor, SearchControl& control) const;

 private:
  struct Stage {
    Pruning pruning;
    unsigned long passes = 0;
    // Candidates after which a pass is left.
    double most = 0;
  };

  bool reduce();
  double wholeTree() const;
  double treeOf(double nodes) const { return isSymmetric_ ? nodes / 2 : nodes; }
  bool addStage();
  std::optional<Pruning> pruningOf(std::size_t stage) const;
  std::optional<BoxLattice> latticeOf(std::initializer_list<unsigned long> seeds) const;
  bool makePass(std::size_t stage, unsigned long pass, Visitor& visitor, SearchControl& control) const;

  BoxLattice lattice_;
  unsigned long seed_;
  PointLength length_;
  // What a basis costs, in candidates.
  double preparation_;
  bool isSymmetric_;
  // Nothing: there are no passes.
  std::optional<ShortBasis> basis_;
  // Candidates of the complete search, estimated; 0: it needs no passes.
  double wholeTree_ = 0;
  std::vector<Stage> stages_;
  double cost_ = 0;
};

}  // namespace latbox::complete
