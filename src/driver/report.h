// What a run prints of its results: the summary, the report of an iteration.
#pragma once

#include <iosfwd>
#include <string>

#include "lattice/lattice.h"

namespace latbox {

// "T(bestTarget) = ", target norm, ", S(bestTarget) = ", slack norm and, where a target is known, the time at
// which it was found.
template <class T, class F>
void bestTargetLine(const HeuristicVector<T, F>& star, std::ostream& stream);

// The best target, where there are target rows; the number of solutions and when the first were found,
// where there are any.
template <class T, class F>
std::string solutionSummary(const Lattice<T, F>& lattice);

// What an iteration prints, which depends on `verb`; at 0 only what has changed since the last call.
template <class T, class F>
std::string iterationReport(Lattice<T, F>& lattice);

// Makes the summary of solutions, and the path of the .sol file, what the final report will print. A signal
// can end the run at any moment, and its handler may not look at a lattice that the solver is changing: so
// the solver publishes after every change of the solutions, of the best vectors and of the file names, and
// once per iteration.
// Requires: the solver thread.
template <class T, class F>
void publishSummary(const Lattice<T, F>& lattice);

// What was published last.
// Requires: the solver thread, or the handler once it has closed the signal holds: the texts are exchanged
// within one.
struct PublishedSummary {
  std::string text;     // the summary, empty when there is nothing to tell
  std::string solFile;  // path of the .sol file
};
const PublishedSummary& publishedSummary();

}  // namespace latbox
