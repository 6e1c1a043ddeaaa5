#include "program/sol_file.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "lib/heapsort.h"
#include "lib/os/file.h"
#include "lib/os/signals.h"
#include "lib/progress.h"
#include "lib/scanner.h"
#include "lib/scope_value.h"
#include "lib/text.h"
#include "lib/time_text.h"
#include "numbers/number.h"
#include "params/statistics.h"
#include "program/exact_product.h"
#include "program/file_items.h"
#include "program/unsaved.h"

namespace latbox {
namespace {

constexpr const char* SEPARATOR = " | ";

// Smaller is earlier; an unknown time comes last.
int compareTimes(long a, long b) {
  if (a == b) return 0;
  if (a == -1) return 1;
  if (b == -1) return -1;
  return a < b ? -1 : 1;
}

// The order of the file.
template <class T>
bool before(const Star<T>& a, const Star<T>& b) {
  if (a.targetNorm != b.targetNorm) return a.targetNorm < b.targetNorm;
  if (a.slackNorm != b.slackNorm) return a.slackNorm < b.slackNorm;
  if (const int times = compareTimes(a.secondsUntilDiscovered, b.secondsUntilDiscovered)) return times < 0;
  if (const int versions = a.version.compare(b.version)) return versions < 0;
  return a.parameters < b.parameters;
}

template <class T>
bool lexicographicallyBefore(const Vector<T>& a, const Vector<T>& b) {
  for (long i = 1; i <= a.MN && i <= b.MN; ++i)
    if (a.data[i] != b.data[i]) return a.data[i] < b.data[i];
  return a.MN < b.MN;
}

template <class T>
bool sameStar(const Star<T>& a, const Star<T>& b) {
  return sameVector<T>(a, b) && sameVector(a.targetValues, b.targetValues);
}

// Of equal stars the earlier stays. Equal ones stand side by side in the order by x, which spares the
// comparison of all pairs.
template <class T>
void removeDuplicates(ConversionArray<Star<T>>& stars) {
  Array<long> order(stars.MN);
  for (long i = 1; i <= stars.MN; ++i) order[i] = i;
  auto less = [&](long i, long j) {
    const Star<T>& a = stars.data[order.data[i]];
    const Star<T>& b = stars.data[order.data[j]];
    if (lexicographicallyBefore<T>(a, b)) return true;
    return !lexicographicallyBefore<T>(b, a) && order.data[i] < order.data[j];
  };
  heapsort(stars.MN, less, [&](long i, long j) { std::swap(order.data[i], order.data[j]); });
  Array<bool> dropped(stars.MN);
  for (long i = 2; i <= stars.MN; ++i) {
    for (long k = i - 1; k >= 1 && sameVector<T>(stars[order[k]], stars[order[i]]); --k) {
      if (!sameStar(stars[order[k]], stars[order[i]])) continue;
      dropped[std::max(order[k], order[i])] = true;
      break;
    }
  }
  long kept = 0;
  for (long i = 1; i <= stars.MN; ++i) {
    if (dropped[i]) continue;
    if (++kept != i) stars[kept] = std::move(stars[i]);
  }
  stars.resize(kept, false);
}

template <class T>
void writeStar(std::ostream& out, const Star<T>& star) {
  star.Vector<T>::write(out);
  out << SEPARATOR << star.targetNorm << SEPARATOR << star.targetValues << SEPARATOR << star.slackNorm
      << SEPARATOR << star.secondsUntilDiscovered << SEPARATOR << star.parameters;
  if (!star.version.empty()) out << SEPARATOR << star.version;
  out << '\n';
}

template <class T>
std::string solText(const ConversionArray<Star<T>>& stars) {
  std::ostringstream out;
  throwOnBadStream(out);
  setFullPrecision(out);
  for (long i = 1; i <= stars.MN; ++i) writeStar(out, stars[i]);
  return out.str();
}

template <class T, class F>
bool isCurrent(const Lattice<T, F>& l, const std::string& parameters) {
  const RunOutput::Written& w = l.output->sol;
  return w.owner == &l && w.version == l.output->resultsVersion && w.solutions == l.solutions.MN &&
         w.stars == l.program.stars.MN && w.parameters == parameters;
}

void putSolFile(RunOutput::Written& written, const std::string& path, std::string text) {
  if (!text.empty() && written.path == path && written.text == text && canOpen(path)) return;
  const SignalHold hold;
  written.failed = !text.empty() && !writeOutput(path, text);
  if (text.empty()) removeFile(path);
  if (written.failed)
    keepUnsaved(path, std::exchange(text, ""));
  else
    forgetUnsaved();
  written.path = path;
  written.text = std::move(text);
}

void skipSeparator(std::istream& in) {
  skipSpaceAndComments(in);
  if (nextCharacter(in) == '|') takeCharacter(in);
}

// An empty field is an empty vector; anything else than a vector is damage, or a file of another kind would
// pass for stars and be overwritten.
template <class T>
void readVector(std::istream& in, Vector<T>& v) {
  skipSpaceAndComments(in);
  const int next = nextCharacter(in);
  if (next != '[' && next != '|') fail("Vector: bad input");
  v.Vector<T>::read(in);
}

template <class T>
void readStar(std::istream& in, Star<T>& star) {
  readVector<T>(in, star);
  skipSeparator(in);
  star.targetNorm = takeNumber<T>(in);
  skipSeparator(in);
  readVector(in, star.targetValues);
  skipSeparator(in);
  star.slackNorm = takeNumber<T>(in);
  skipSeparator(in);
  star.secondsUntilDiscovered = takeInteger(in);
  skipSeparator(in);
  requireExact<T>(star);
  requireExact(star.targetValues);
}

// The rest of a line: parameters and version.
template <class T>
void readTail(std::istream& in, Star<T>& star) {
  std::string rest;
  std::getline(in, rest);
  const std::size_t bar = rest.find('|');
  star.parameters = trimmed(rest.substr(0, bar), BLANKS);
  if (bar == std::string::npos) return;
  const std::string behind = rest.substr(bar + 1);
  star.version = trimmed(behind.substr(0, behind.find('|')), BLANKS);
}

template <class T>
ConversionArray<Star<T>> parseSolText(const std::string& text) {
  ConversionArray<Star<T>> stars;
  std::istringstream lines(text);
  throwOnBadStream(lines);
  std::string line;
  while (std::getline(lines, line)) {
    std::istringstream in(line);
    throwOnBadStream(in);
    acceptExponents(in);
    skipSpaceAndComments(in);
    if (nextCharacter(in) == std::char_traits<char>::eof()) continue;
    Star<T> star;
    readStar(in, star);
    readTail(in, star);
    stars.append(star);
  }
  return stars;
}

enum class Admission { admitted, foreign, infeasible };

template <class T, class F>
Admission admit(Lattice<T, F>& l, const Star<T>& star) {
  Vector<T> v;
  if (!l.tryOpt2lat(star, v, false)) return Admission::foreign;
  const unsigned result = l.checkSolution(v, foundAfter(star.secondsUntilDiscovered), false);
  if (result & CHECK_FOREIGN) return Admission::foreign;
  return result & CHECK_FEASIBLE ? Admission::admitted : Admission::infeasible;
}

template <class T>
void writeMark(std::ostream& out, const T& wanted) {
  if (!isInfinite(wanted)) {
    out << "\u2192" << wanted;
  } else {
    out << (wanted > T(0) ? "\u2191" : "\u2193");
  }
  out << ' ';
}

template <class T>
void writeReport(std::ostream& out, const Star<T>& star, const Vector<T>& wanted) {
  out << "x = ";
  star.Vector<T>::write(out);
  if (star.slackNorm == T(-1)) return;
  out << "\n\nTarget values: [ ";
  for (long i = 1; i <= star.targetValues.MN; ++i) {
    out << star.targetValues[i];
    if (i <= wanted.MN) writeMark(out, wanted[i]);
  }
  out << "]\nTarget Norm: " << star.targetNorm << "\nSlack Norm: " << star.slackNorm;
  if (star.secondsUntilDiscovered == -1) return;
  out << "\nFound after: ";
  timeText(out, star.secondsUntilDiscovered);
}

}  // namespace

template <class T, class F>
Star<T> starOf(const Lattice<T, F>& l, const TimeVector<T>& v) {
  Star<T> star;
  if (l.lat2opt(v, star, true) != 1) fail("sol2star: lat2opt can not compute x_opt");
  star.targetNorm = star.slackNorm = T(0);
  if (l.program.At.M > 0) {
    star.targetValues = exactProduct<T>(l.program.At, star);
    const auto norms = l.program.targetNorms(star.targetValues, star);
    star.targetNorm = norms.left;
    star.slackNorm = norms.right;
  }
  star.resize(star.MN - l.deviationCount - l.slackCount, false);
  star.parameters = l.params.text();
  // A value from the command line may hold a line end; a star must not.
  std::replace(star.parameters.begin(), star.parameters.end(), '\n', ' ');
  star.version = VERSION;
  star.secondsUntilDiscovered = v.secondsUntilDiscovered;
  return star;
}

template <class T, class F>
void sol2star(Lattice<T, F>& l) {
  auto& list = l.program.stars;
  if (l.bestSlack.notEmpty()) list.append(starOf(l, l.bestSlack));
  for (long i = 1; i <= l.solutions.MN; ++i) list.append(starOf(l, l.solutions[i]));
  heapsort(
      list.MN, [&](long i, long j) { return before(list.data[i], list.data[j]); },
      [&](long i, long j) { list.swap(i, j); });
  removeDuplicates(list);
}

template <class T, class F>
void writeSolFile(Lattice<T, F>& l, bool keepStars) {
  if (!l.writeEnabled || l.output->held) return;
  RunOutput::Written& written = l.output->sol;
  const std::string parameters = l.params.text();
  if (!keepStars && !written.failed && isCurrent(l, parameters) && written.path == l.solFile &&
      (written.text.empty() || canOpen(l.solFile)))
    return;
  if (!keepStars) sol2star(l);
  if (l.solFile.empty()) {
    warn("solFile is not set - solution write not possible");
    return;
  }
  putSolFile(written, l.solFile, solText(l.program.stars));
  written.owner = &l;
  written.version = keepStars ? -1 : l.output->resultsVersion;
  written.solutions = l.solutions.MN;
  written.stars = l.program.stars.MN;
  written.parameters = parameters;
}

template <class T, class F>
void readStarsFromSolFile(Lattice<T, F>& l, bool, bool) {
  if (isBenchmark(l.params.bench.get())) return;
  const ProgressScope level(l.verb() == 2, "Reading sol file ...");
  std::string text;
  if (!readFile(l.solFile, text)) return;
  const ConversionArray<Star<T>> found = parseSolText<T>(text);
  const ScopeValue<bool> unwritten(l.writeEnabled, false);
  const ScopeValue<bool> unfinished(l.finishEnabled, false);
  readmitStars(l, found, true);
}

// What happens meanwhile concerns stars that the operator knows, so nothing is traced but what becomes of
// them.
template <class T, class F>
void readmitStars(Lattice<T, F>& l, const ConversionArray<Star<T>>& candidates, bool report) {
  for (long i = 1; i <= candidates.MN; ++i) {
    Admission admission;
    {
      const Mute mute;
      admission = admit(l, candidates[i]);
    }
    const bool told = report && l.verb() >= 2;
    switch (admission) {
      case Admission::admitted:
        l.program.stars.append(candidates[i]);
        break;
      case Admission::foreign:
        progressLine(told, "Star-Vector is not part of the lattice");
        break;
      case Admission::infeasible:
        progressLine(told, "Star-Vector is neither a solution nor a feasible vector");
        break;
    }
  }
  ++l.output->resultsVersion;
}

template <class T, class F>
std::string starReport(const Lattice<T, F>& l) {
  std::ostringstream out;
  setFullPrecision(out);
  for (long i = 1; i <= l.program.stars.MN; ++i) {
    if (i > 1) out << "\n---\n";
    writeReport(out, l.program.stars[i], l.program.dt);
  }
  return out.str();
}

LATBOX_BOTH_TYPES(starOf)
LATBOX_BOTH_TYPES(sol2star)
LATBOX_BOTH_TYPES(writeSolFile)
LATBOX_BOTH_TYPES(readStarsFromSolFile)
LATBOX_BOTH_TYPES(readmitStars)
LATBOX_BOTH_TYPES(starReport)

}  // namespace latbox
