// Branch and bound in the variables of a program themselves.
//
// Idea: where a program has many sparse rows its lattice has a high rank and nothing to offer, while its
// linear relaxation says nearly all. So a point of the relaxation is looked at that is best for a goal; if it
// is whole the search has a point, else the box is cut in two where one of its values is not (Land, Doig, An
// automatic method of solving discrete programming problems, 1960). The first step of the dual simplex method
// tells what the goal loses at least in either half (Driebeek, 1966; Tomlin, 1970): the variable is the one
// of which the smaller loss is greatest, and the half with the smaller loss comes first. Each box is narrowed
// by the activities of its rows before it is looked at.
//
// A box is left as empty by proof alone, in whole numbers (domains.h, box_relaxation.h); whatever doubles say
// else decides where to look next, and costs time if it is wrong.
//
// Cost: some steps of the simplex method a node, rows x variables each; a search ends or gives up after an
// effort, so that all repeats.
#pragma once

#include <atomic>
#include <functional>

#include "complete/linear/box_relaxation.h"
#include "complete/linear/domains.h"

namespace latbox::complete {

class BranchAndBound {
 public:
  // Whether the numbers fit into words, and the dictionary into some memory.
  static bool isPossible(const IntegerProgram& program);

  // Points with little of the goal are looked for first, a form of the variables; another seed goes another
  // way. Requires isPossible.
  BranchAndBound(const IntegerProgram& program, const IntegerVector& goal, unsigned seed);
  BranchAndBound(const BranchAndBound&) = delete;
  BranchAndBound& operator=(const BranchAndBound&) = delete;

  enum class End {
    // All points were visited.
    COMPLETE,
    // The visitor wants no more.
    STOPPED,
    GIVEN_UP
  };
  // Is given all variables of a point, and says whether to go on.
  using Visit = std::function<bool(const IntegerVector& z)>;
  // Calls `visit` for each point, for some more than once, and counts nodes up. Gives up after so many
  // operations, roughly, or when `isOver`, which is asked now and then. Once.
  End run(const Visit& visit, unsigned long effort, const std::function<bool()>& isOver,
          std::atomic<unsigned long>& nodes);

 private:
  struct Search {
    Search(WordProgram words, const std::vector<double>& goal, unsigned seed);

    WordProgram program;
    Domains domains;
    BoxRelaxation relaxation;
  };
  // Two parts of what a variable has.
  struct Split {
    std::size_t variable;
    WordRange first;
    WordRange second;
  };
  // The part that is left to do, and where.
  struct Other {
    Domains::Mark mark;
    std::size_t variable;
    WordRange range;
  };

  std::optional<Split> look(const Visit& visit, const std::function<bool()>& isOver);
  std::optional<Split> splitAtPoint() const;
  std::optional<Split> splitBeside() const;
  void takeNearest(bool hasPoint);
  bool keepsRows() const;
  void descend(const Split& split);
  bool takeOther();
  unsigned long work() const;

  // Nothing: the program has no point.
  std::optional<Search> search_;
  std::vector<Other> others_;
  // A whole point of the present box, as ranges of one value.
  std::vector<WordRange> nearest_;
  bool isStopped_ = false;
};

}  // namespace latbox::complete
