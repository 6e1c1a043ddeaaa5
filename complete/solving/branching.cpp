#include "complete/solving/branching.h"

#include <algorithm>
#include <cmath>

#include "complete/linear/branch_and_bound.h"

namespace latbox::complete {
namespace {

constexpr double MOST_EFFORT = 2e10;
constexpr unsigned ROUNDS = 4;

struct Size {
  double variables = 0;
  double coordinates = 0;
};

// Of the lattice, about: inequations are coordinates of it.
Size sizeOf(const IntegerProgram& program) {
  Size size;
  for (const Range& range : program.box) size.variables += range.isFixed() ? 0 : 1;
  size.coordinates = size.variables;
  for (const Row& row : program.rows) size.coordinates += row.range.isFixed() ? 0 : 1;
  return size;
}

unsigned long effortOf(double operations) {
  return static_cast<unsigned long>(std::min(operations, MOST_EFFORT));
}

// Remembers that the visitor wants no more, be it shown a point by a search or by the journal of an earlier
// one.
class Watched : public Visitor {
 public:
  explicit Watched(Visitor& visitor) : visitor_(visitor) {}

  Next visit(const IntegerVector& z) override {
    const Next next = visitor_.visit(z);
    hasEnough_ = next != Next::GO_ON;
    return next;
  }
  std::optional<IntegerVector> held() const override { return visitor_.held(); }
  bool isInterrupted() const override { return visitor_.isInterrupted(); }

  bool hasEnough() const { return hasEnough_; }

 private:
  Visitor& visitor_;
  bool hasEnough_ = false;
};

}  // namespace

// By measure of LLL and of the tables of a search, in which the coordinates count as much as the rank.
unsigned long effortOfReduction(const IntegerProgram& program) {
  const Size size = sizeOf(program);
  return effortOf(std::pow(size.variables * size.coordinates, 2));
}

// Ten more of rank double it, where that is least: some seconds for market splits of rank 60.
unsigned long effortOfSearch(const IntegerProgram& program) {
  return effortOf(3e7 * std::exp2(sizeOf(program).variables / 10));
}

bool searchByBranching(Journal& journal, const std::string& key, const IntegerProgram& program,
                       const IntegerVector& goal, Visitor& visitor, unsigned long effort) {
  SearchControl& control = journal.control();
  control.done = -1;
  Watched watched(visitor);
  const auto visit = [&](const IntegerVector& z) { return watched.visit(z) == Next::GO_ON; };
  const auto isOver = [&] { return control.isOver(); };
  if (!BranchAndBound::isPossible(program)) return false;
  bool isComplete = false;
  for (unsigned round = 0; round < ROUNDS && !isComplete && !watched.hasEnough() && !control.isOver();
       ++round) {
    const unsigned long part = effort >> (ROUNDS - round);
    const auto make = [&](unsigned long, const std::function<void(unsigned long)>&) {
      BranchAndBound search(program, goal, round + 1);
      return search.run(visit, part, isOver, control.nodes) == BranchAndBound::End::COMPLETE;
    };
    const std::string name = " branch and bound " + std::to_string(part) + " " + std::to_string(round);
    isComplete = journal.makeParts(digestOf(key + name), make, watched);
  }
  return isComplete;
}

}  // namespace latbox::complete
