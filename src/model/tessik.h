// The optimisation program as data, and its way to the normal form from which a lattice is generated.
//
// A program asks for x of n variables with Ag x = bg, lu <= Au x <= ru, lx <= x <= rx, each x[i] a multiple
// of 10^(-dx[i]), and judges x by the target rows At: dt[i] = -inf minimises At[i] x, inf maximises it, a
// finite value asks for it. kt[i] is a threshold on target value i.
//
// Lattice<T,F> derives from Tessik<T> (the working copy, rewritten by stage two of the preparation) and holds
// a second one named `program` (the program as read, rewritten by stage one, by which solutions are judged).
#pragma once

#include <string>

#include "lib/constants.h"
#include "model/dependent_rows.h"
#include "model/star.h"
#include "numbers/map.h"
#include "numbers/matrix.h"
#include "numbers/pair.h"
#include "numbers/serializable_array.h"
#include "numbers/vector.h"

namespace latbox {

// Which bounds of a variable are missing.
enum class FreedomDegree : unsigned short { bounded = 0, noLower = 1, noUpper = 2, free = 3 };

std::ostream& operator<<(std::ostream& stream, FreedomDegree degree);
std::istream& operator>>(std::istream& stream, FreedomDegree& degree);

template <class T>
class Tessik {
 public:
  std::string optFile;
  std::string solFile;
  Vector<T> dt;                 // target values or directions, one per row of At; +-inf allowed
  Vector<T> kt;                 // target thresholds; +-inf allowed
  SerializablePair<T, T> lrtu;  // (ltu, rtu): bounds on the combined target, default (-inf, inf)
  Matrix<T> At;                 // target rows
  bool tu = false;              // the combined target is bounded and forms a row of the lattice
  Vector<T> atu;                // combined target row: sum of targetSign(i) At[i]
  Vector<T> bg;                 // equation right-hand sides
  Vector<T> lu;                 // lower inequation bounds, -inf allowed
  Vector<T> ru;                 // upper inequation bounds, inf allowed
  Matrix<T> Ag;                 // equation rows
  Matrix<T> Au;                 // inequation rows
  Vector<T> dx;                 // decimal digits of each variable
  Vector<T> lx;                 // lower variable bounds, -inf allowed
  Vector<T> rx;                 // upper variable bounds, inf allowed
  SerializableArray<FreedomDegree> fx;
  ConversionArray<Star<T>> stars;  // solutions in hand
  Map<long, T> fixedComponents;    // removed variables: original position and value, ascending position
  Vector<long> swappedComponents;  // positions of variables whose sign was swapped
  bool allTargetsFinite = true;    // no component of dt was infinite when the file was read
  long slackCount = 0;             // slack variables added
  long deviationCount = 0;         // deviation variables added, two per finite target
  bool writeEnabled = false;       // results go to the .sol and .lat files
  bool finishEnabled = false;      // termination handling may report and end the run
  bool prepared = false;           // stage one has run since readOpt

  Tessik();
  Tessik(const Tessik&) = default;
  Tessik& operator=(const Tessik&) = default;
  virtual ~Tessik() = default;

  T& ltu() { return lrtu.left; }
  T& rtu() { return lrtu.right; }
  const T& ltu() const { return lrtu.left; }
  const T& rtu() const { return lrtu.right; }
  long n() const { return rx.MN; }

  // Reads optFile. The checks come in the order of the file, and the first that fails ends the program; a
  // vector that is missing at the end of the file throws ReadException("Vector: bad stream") instead. Only
  // the exact instance has a reader.
  void readOpt();

  // Empties everything; the paths too unless keepFileNames.
  void reset(bool keepFileNames);

  // Takes every member of a program in the other number type; throws PrecisionException with
  // "Precision lost during conversion" where a value does not convert and come back.
  template <class U>
  void convertFrom(const Tessik<U>& other);

  // One more variable behind the others; the matrices are not touched.
  void appendComponent(const T& l, const T& r, const T& d);
  static FreedomDegree freedomOf(const T& l, const T& r);

  // -1 for a maximised target, otherwise 1.
  T targetSign(long i) const;
  // Largest absolute value among the components, 0 for an empty vector.
  static T maxNorm(const Vector<T>& v);
  // Sum of the absolute target values. Fails with "This should not be the case anymore!" on a finite dt.
  T targetNorm(const Vector<T>& t) const;
  // (targetNorm, slackNorm) of target values t and variables x (slacks and deviations kept); smaller is
  // better in both. Fails with "preparation inconsistency" on a finite dt of a prepared program.
  SerializablePair<T, T> targetNorms(const Vector<T>& t, const Vector<T>& x) const;
  // The figures line of the program, printed when `verbose`.
  void printProgram(bool verbose) const;

  // Stage one, in the order of the calls, on a program as read. `verbose` prints the log lines; `full` also
  // bounds the combined target by the thresholds and by the corners of the box, which a program whose bounds
  // come from a saved lattice does without. The variables that are added stand behind the user's, slacks
  // first. Fails with "Unfulfillable infinite inequation detected --> NO SOLUTIONS!" where both sides of a
  // row are the same infinity. In dbl_t throws PrecisionException with "atu overflow" or "sum overflow".
  void prepareStageOne(bool full, bool verbose);
  void removeUselessInequations(bool verbose);
  void transferFakeInequations(bool verbose);
  void insertSlacks();
  void insertDeviations();
  void computeAtu();
  void applyThresholds();
  // Asks for a combined target below s, which has target values k: the bounds take that in, the lower one by
  // the norm of k, and are in force (`tu`) from then on. Where neither moves nothing changes.
  void setTargetBound(const Vector<T>& k, const T& s);
  void boundTargetByVariables();

  // Stage two, in the order of the calls, on a copy of a program that has been through stage one. Afterwards
  // variable i is lx[i], or 0 where that is missing, plus a whole number from 0 to rx[i], and all
  // coefficients are whole. Fails with "Unfulfillable inequality detected --> NO SOLUTIONS!" and
  // "Unfulfillable equality detected --> NO SOLUTIONS!", a line on standard error before them where it is a
  // row that can't be met, and for digits that no number can have. In dbl_t throws PrecisionException, with a
  // text per step.
  void prepareStageTwo(bool verbose);
  void removeComponents();
  void applyDigits();
  void makeIntegral();
  void removeDependencies(bool verbose);
  void swapHalfFree(bool verbose);
  void tightenRows(bool inequations);
  void translate();
};

}  // namespace latbox
