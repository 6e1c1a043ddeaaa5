#include "driver/report.h"

#include <algorithm>
#include <sstream>

#include "lib/immortal.h"
#include "lib/os/clock.h"
#include "lib/os/signals.h"
#include "lib/time_text.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

// See report.h for who may look.
PublishedSummary& published() {
  static Immortal<PublishedSummary> summary;
  return *summary;
}

std::string changedSummary(std::string& lastPrinted, const std::string& summary) {
  if (summary.empty() || summary == lastPrinted) return "";
  lastPrinted = summary;
  return summary;
}

void writeTotals(std::ostream& out, const Statistics& statistics) {
  out << "------------------------- Some statistics --------------------------\n\n";
  out << "Total iterations: " << statistics.iterations.get() << "\nTotal running time: ";
  timeText(out, now() - statistics.startTime.get());
  out << "\n\n";
}

template <class T, class F>
void writeReductionCounts(std::ostream& out, const Lattice<T, F>& lattice, const Statistics& statistics) {
  if (lattice.consistencyOn()) out << "Transformation matrices: " << lattice.TT.MN << "\n\n";
  if (lattice.params.deep.get()) out << "Deep insertions: " << statistics.deepInsertions << "\n\n";
  out << "Basis substitutions (triv / ntriv): ( " << statistics.basisSubstitutionsTrivial << " / "
      << statistics.basisSubstitutionsNontrivial << " )\n";
  out << "Non-trivial basis extensions: " << statistics.nontrivialBasisExtensions << '\n';
}

template <class T, class F>
void writeSearchCounts(std::ostream& out, const Lattice<T, F>& lattice, const Statistics& statistics) {
  if (lattice.params.sample.get()) {
    out << "Sampling basis extensions: " << statistics.samplingBasisExtensions << "\n\n";
    out << "Sampling collections: " << statistics.samplingCollections << '\n';
  }
  if (lattice.params.pair.get()) out << "\nPairwise collections: " << statistics.pairwiseCollections << '\n';
  if (lattice.params.sieve.get())
    out << "\nSieveable in/homogenous vectors: (" << lattice.inhomogeneousVectors.count << ", "
        << lattice.homogeneousVectors.count << ")\n";
}

template <class T, class F>
void writeBestVectors(std::ostream& out, const Lattice<T, F>& lattice) {
  const auto& inhomogeneous = lattice.bestInhomogeneous;
  if (inhomogeneous.MN > 0) {
    out << "Best inhomogenous vector: \n" << inhomogeneous << " -- { ";
    timeText(out, inhomogeneous.secondsUntilDiscovered);
    out << " } -- { " << inhomogeneous.deviation << " }\n\n";
  }
  if (lattice.bestSlack.MN > 0) {
    out << "Best vector: \n" << lattice.bestSlack << " -- { ";
    timeText(out, lattice.bestSlack.secondsUntilDiscovered);
    out << " } -- ";
    bestTargetLine(lattice.bestSlack, out);
    out << "\n\n";
  }
}

template <class T, class F>
void writeVectors(std::ostream& out, const Lattice<T, F>& lattice) {
  out << setFullPrecision << '\n';
  writeBestVectors(out, lattice);
  out << "B[1]: \n" << (lattice.rank > 0 ? lattice.B[1] : Vector<T>()) << '\n';
  if (lattice.params.scale.get() || lattice.params.translate.get())
    out << "\nTrimming (scale / translation): \nscaling = " << lattice.scaleFactor
        << "\ntranslation = " << lattice.translation << '\n';
}

template <class T, class F>
void writeProgress(std::ostream& out, const Lattice<T, F>& lattice, const Statistics& statistics) {
  out << "\nInhomogenous improvements: " << statistics.inhomogeneousImprovements << '\n';
  if (lattice.program.At.M > 0) out << "Target improvements: " << statistics.targetImprovements << '\n';
  if (statistics.noPrimaryImprovement != 0)
    out << "\nNo primary improvement since " << statistics.noPrimaryImprovement
        << " consecutive iteration(s)\n";
}

template <class T, class F>
std::string statisticsBlock(const Lattice<T, F>& lattice) {
  const Statistics& statistics = statisticsOf<T>();
  std::ostringstream out;
  if (lattice.verb() == 2) out << '\n';
  writeTotals(out, statistics);
  writeReductionCounts(out, lattice, statistics);
  writeSearchCounts(out, lattice, statistics);
  if (lattice.verb() >= 2 || lattice.params.gui.get()) writeVectors(out, lattice);
  writeProgress(out, lattice, statistics);
  out << solutionSummary(lattice);
  out << "\n--------------------------------------------------------------------\n\n";
  return out.str();
}

}  // namespace

template <class T, class F>
void bestTargetLine(const HeuristicVector<T, F>& star, std::ostream& stream) {
  stream << "T(bestTarget) = " << star.targetNorm << ", S(bestTarget) = " << star.slackNorm;
  if (isInfinite(star.targetNorm)) return;
  stream << " -- { ";
  timeText(stream, star.secondsUntilDiscovered);
  stream << " }";
}

// In full precision: with fewer digits a better target could print as the one before, and verb 0, which shows
// what changed, would stay silent.
template <class T, class F>
std::string solutionSummary(const Lattice<T, F>& l) {
  std::ostringstream out;
  out << setFullPrecision;
  if (l.program.At.M > 0) {
    out << '\n';
    bestTargetLine(l.bestSlack, out);
    out << '\n';
  }
  if (l.params.bench.get() == 0 && l.solutions.MN != 0)
    out << "\nSolutions found: " << l.solutions.MN << '\n';
  if (l.solutions.MN > 0) {
    out << "\n{ The first solution/s was/were found after: ";
    for (long i = 1; i <= std::min(l.solutions.MN, 3L); ++i) {
      timeText(out, l.solutions[i].secondsUntilDiscovered);
      out << ' ';
    }
    out << "}\n";
  }
  return out.str();
}

template <class T, class F>
std::string iterationReport(Lattice<T, F>& l) {
  const bool silent = l.verb() == 0 && !l.params.gui.get();
  const std::string text =
      silent ? changedSummary(l.output->lastPrintedSummary, solutionSummary(l)) : statisticsBlock(l);
  if (l.params.gui.get()) l.mainVars[MainMutexVariable::reportText].set(text);
  publishSummary(l);
  return text;
}

template <class T, class F>
void publishSummary(const Lattice<T, F>& lattice) {
  // While kept vectors come back one by one, what was published before they left is the better summary.
  if (lattice.search.reinserting || lattice.output->held) return;
  PublishedSummary fresh{solutionSummary(lattice), lattice.solFile};
  if (fresh.text == published().text && fresh.solFile == published().solFile) return;
  const SignalHold hold;
  std::swap(published(), fresh);
}

const PublishedSummary& publishedSummary() {
  return published();
}

template void bestTargetLine(const HeuristicVector<dbl_t, dbl_t>&, std::ostream&);
template void bestTargetLine(const HeuristicVector<QQ, dbl_t>&, std::ostream&);
LATBOX_BOTH_TYPES(publishSummary)
LATBOX_BOTH_TYPES(solutionSummary)
LATBOX_BOTH_TYPES(iterationReport)

}  // namespace latbox
