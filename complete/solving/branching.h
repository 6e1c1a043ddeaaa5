// Branch and bound before the searches of a lattice, for as long as it is cheap beside them.
//
// Most models of daily life are settled by their linear relaxation (branch_and_bound.h), and those that are
// not are what lattices are for; nobody knows beforehand. So it has, before a lattice is reduced, about what
// that costs, and before a lattice is searched that was not small, what a search of such a rank takes as a
// rule. Where it finds nothing one way, it may soon find something another way: its effort is given out in
// rounds with seeds of their own, each with as much as all those before.
//
// All is counted, not timed; a round is a search in the journal.
#pragma once

#include "complete/solving/journal.h"

namespace latbox::complete {

// Operations: of reducing the lattice of a program, at least; and of searching it.
unsigned long effortOfReduction(const IntegerProgram& program);
unsigned long effortOfSearch(const IntegerProgram& program);

// Shows points to the visitor until it wants no more, with little of the goal first. True: the visitor has
// seen all points. `key` says what the program is. Open ranges are nothing for it.
bool searchByBranching(Journal& journal, const std::string& key, const IntegerProgram& program,
                       const IntegerVector& goal, Visitor& visitor, unsigned long effort);

}  // namespace latbox::complete
