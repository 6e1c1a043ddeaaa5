// The lattice object on which every reduction and heuristic works.
//
// Declared once here, defined over many sources, one technique per file; each group below names its file.
// T is the number type of the exact data (dbl_t or QQ), F (always dbl_t) that of what guides the reduction.
// All arrays are 1-based. `rank` rows, `dim` coordinates; coordinate `dim` is the inhomogeneous one. Row 0 of
// B exists and is scratch. A lattice object belongs to the solver thread; other threads read its parameters
// and mainVars alone.
//
// Unit and weighted coordinates. B is weighted: weighted = scaleFactor * unit, componentwise, plus
// (unit[dim] / inhomBase) * translation. B_save, TT, the bounds, the collections, the best vectors and the
// solutions are in unit coordinates.
//
// heuristics/heuristic_vector.h is the one header of a layer above: what the object remembers carries its
// measure. It pulls in nothing but the vectors of the program.
#pragma once

#include <string>
#include <vector>

#include "lattice/coord_solver.h"
#include "lattice/enumeration_tree.h"
#include "lattice/heuristic_vector.h"
#include "lattice/stage.h"
#include "lib/set.h"
#include "model/tessik.h"
#include "params/mutex_vars.h"
#include "params/params.h"

namespace latbox {

// States of one basis vector. A set of bits, but for STATUS_DEPENDENT, which stands alone: setting bits
// clears it first, and tests are `== STATUS_DEPENDENT`.
inline constexpr short STATUS_DEPENDENT = 1;   // dependent on its predecessors, or zero
inline constexpr short STATUS_GSO = 0x02;      // mu row, bNormSq and bstarSq are valid
inline constexpr short STATUS_FULL = 0x0e;     // row computed by lq_full, includes STATUS_GSO
inline constexpr short STATUS_LQ = 0x16;       // row computed by lq_reduced, includes STATUS_GSO
inline constexpr short STATUS_REDUCED = 0x20;  // size-reduced against its predecessors
inline constexpr short STATUS_SWEPT = 0x40;    // the sweep passed and nothing changed it since

// The number of transformation matrices above which a warning appears.
inline constexpr long T_MAT_NBR = 20;

// Bits of the result of checkSolution.
inline constexpr unsigned CHECK_FOREIGN = 1;   // not part of the lattice
inline constexpr unsigned CHECK_FEASIBLE = 2;  // feasible
inline constexpr unsigned CHECK_LOOKED = 4;    // looked at as a solution
inline constexpr unsigned CHECK_NEW = 8;       // a new solution was recorded
inline constexpr unsigned CHECK_BOUND = 16;    // a bound was improved
inline constexpr unsigned CHECK_LIMIT = 32;    // the limit on solutions was reached

// What a caller of checkSolution knows of its vector. A row of B, or an integer combination of rows or of
// members of the collections, is a lattice vector by construction: every row operation is unimodular and
// exact, or has thrown. Such a vector passes the membership test at once; before anything of it is recorded
// it takes the real test all the same.
enum class Membership { unknown, byConstruction };

// When a candidate was found. A time of 0 that was read from a file is known, and not "now".
struct DiscoveryTime {
  bool known = false;
  long seconds = 0;
};
inline constexpr DiscoveryTime NOW{};
constexpr DiscoveryTime foundAfter(long seconds) {
  return {true, seconds};
}

// Pairs of coordinate number and deviation, ordered by the deviation.
template <class T>
using DeviationList = SerializableArray<RightOrderPair<long, T>>;

template <class T, class F>
class Lattice : public Tessik<T>, public ParamOwner {
 public:
  using Tessik<T>::stars;

  long savedSeconds = 0;  // seconds read from a .lat file
  long rank = 0;
  long dim = 0;
  T inhomBase = T(1);    // inhomogeneous coordinate in unit coordinates
  T inhomScaled = T(1);  // scaleFactor[dim] * inhomBase
  ExtendedParams<T> params{this};
  MainMutexVars mainVars;
  std::string latFile;

  HeuristicVector<T, F> bestInhomogeneous;  // best vector with inhomogeneous coordinate, empty when none
  HeuristicVector<T, F> bestSlack;          // best judged feasible vector, empty when none
  Array<TargetVector<T>> solutions;         // found in this run, in order of discovery
  Tessik<T> program;                        // as read; prepared by stage one

  T R = T(0);                      // common range of the centred embedding
  Vector<T> lbnd, ubnd;            // check vectors: allowed range per coordinate
  Vector<T> lbndSaved, ubndSaved;  // as generated
  bool symmetricBounds = false;    // lbnd == -ubnd
  long checkMode = 0;              // 0 no check vectors, 1 equation lattice, 2 final lattice
  T normBound = T(0);              // 3 * max squared length of lbnd, ubnd
  Vector<T> c;                     // multiplier per coordinate of the embedding (in the .lat file)
  bool generatedTu = false;        // the base part's tu when the basis was generated: fixes the layout
  // `program`'s bounds when the basis was generated, which the .lat file holds. `program` itself may be ahead
  // of the lattice: bounds that a new vector improves move at once.
  Vector<T> generatedLx, generatedRx;
  SerializablePair<T, T> generatedLrtu;

  SerializableArray<Matrix<T>> TT;  // transformations; TT[TT.MN] * B_save = unscaled(B)
  Matrix<T> B_save;                 // basis as generated or read, unit coordinates
  Matrix<T> B;                      // current basis, weighted coordinates
  Matrix<F> Bstar;
  Matrix<F> mu;  // rank x rank; mu[i][i] = 1, zero above the diagonal
  Vector<T> bNormSq;
  Vector<F> bstarSq;
  long interval_tt = 100;     // adaptive swap budget of a sweep
  long sweepSkipped = 0;      // positions that the last sweep left untested
  bool sweepStopped = false;  // the last sweep ended by `btime` or by a step that gave up
  bool sweepSilent = false;   // sweeps print no status line
  CoordSolver<T> coordSolver;
  Array<short> status;   // rank words; what is valid per row
  bool blended = false;  // STATUS_DEPENDENT survives invalidation while set
  SerializableArray<Matrix<F>> lqStages;
  Vector<F> lqNorms;
  SerializableArray<Matrix<F>> lqReflections;
  Matrix<F> lqL;
  Vector<T> enumCoeffs;
  F enumBound = F(0);
  Array<Stage<T, F>> stages;  // up to rank + 1 used
  EnumerationTree<F> tree;    // the block's stages while its nodes are walked; scratch
  SortedSet<HeuristicVector<T, F>> homogeneousVectors;
  SortedSet<HeuristicVector<T, F>> inhomogeneousVectors;
  Vector<T> scaleFactor;  // weight per coordinate, all 1 after generation
  Vector<T> translation;  // shift per coordinate; empty reads as zeros; [dim] is 0
  Vector<T> stepAverage;  // running mean of the scale steps per coordinate
  Vector<long> stepCount;

  // lattice/lattice.cpp
  Lattice();
  Lattice(const Lattice& other);
  // The whole state, parameters and mainVars by value. Deep, but of the factorisation scratch (lqStages,
  // lqReflections, stages, enumCoeffs) only what `status` marks valid is carried; storage is reused.
  Lattice& operator=(const Lattice& other);
  // All mathematical members; the parameters too unless keepParameters. mainVars stay in either case.
  void copyFrom(const Lattice& source, bool keepParameters);
  // Every member from the lattice of the other precision. Throws PrecisionException with "Precision lost
  // during conversion" where one does not convert and come back; what the lattice can recompute is dropped.
  template <class U>
  void convertFrom(const Lattice<U, F>& other);
  // Back to the state of no file: no program, no basis, no vectors, names emptied; parameters and mainVars
  // stay.
  void reinitialise();
  // rank, dim, B (with scratch row 0), B_save, TT, mu, status, stages, ... for a lattice of this size, all
  // zero; weights 1, translation empty. Collections, best vectors, solutions and stars are not touched.
  void resizeLattice(long newRank, long newDim);
  // Work data (GSO, enumeration, transformations' caches) for the present rank; status all 0.
  void resizeWork(long newRank);
  void clearStatus();  // every word 0
  // status from `from` to rank to 0, except that a word of 1 behind position 1 stays while `blended`.
  void invalidateFrom(long from);
  bool consistencyOn() const { return params.consistency.get(); }
  long verb() const { return params.verb.get(); }
  void emptyCollections();

  // lattice/weights.cpp: the weight map and the rule for changing a weight or a shift
  bool unweighted() const;  // all weights 1 and no shift: both maps are the identity
  // `dim` coordinates; both arguments may be one object. To weighted coordinates: throws PrecisionException
  // with "vector precisison overflow".
  void unscaledVector(const Vector<T>& weighted, Vector<T>& unit) const;
  void rescaledVector(const Vector<T>& unit, Vector<T>& weighted) const;
  Matrix<T> unscaled(const Matrix<T>& basis) const;
  Matrix<T> rescaled(const Matrix<T>& basis) const;
  // The basis keeps its unit coordinates, and all of `status` is cleared; nothing happens where the weight
  // has this value, which may not be 0. A shift of coordinate `dim` fails with "The inhomogenous component
  // can not get translated!".
  void setScale(long p, const T& value);
  void setTranslation(long p, const T& value);
  // resetFactors: weights 1, their steps forgotten, the limit of trimming put back. resetTranslation: no
  // shift. `status` is cleared in any case.
  void resetScales(bool resetFactors, bool resetTranslation) override;

  // lattice/consistency.cpp
  // Coordinates of a vector in unit coordinates with respect to the rows of B_save or of B; throughTT takes
  // those of B on to B_save. False where there are none or they are not all integers. Throws
  // PrecisionException with "transformation coord error" where T can't hold one.
  bool coordinates(const Vector<T>& unitVector, Vector<T>& result, bool useSaved, bool throughTT = false);
  // Coordinates of v (unit coordinates) with respect to B_save; with `check` TT follows from B first, and
  // with `positive` -v is meant where the inhomogeneous coordinate of v is against the sign of inhomBase.
  // Throws PrecisionException with "rt overflow" and, where there are no coordinates, "transformation coord
  // error".
  void transformationCoordinates(const Vector<T>& v, Vector<T>& result, bool check, bool positive);
  // Makes sure that B is a basis of the lattice of B_save. With `consistency` what TT makes of B_save takes
  // the place of a basis that differs; without it TT follows from B, and where that fails B goes back to
  // B_save and nothing else is done. Then, with `rebase`, B becomes B_save and a unit matrix the last
  // transformation; the .lat file is written unless keepFile.
  // Throws PrecisionException with "unimodular error", "transformation overflow", "base matrix overflow".
  // Fails with "In the non-aardal case TT.MN should always be == 1", and on a rectangular transformation as
  // determinant() does.
  void checkConsistency(bool rebase, bool keepFile);
  // Appends a unit matrix to TT, or with reuseIdentity keeps a last one that is a unit matrix. Warns above
  // T_MAT_NBR.
  void newTransformation(bool reuseIdentity);
  // True when v (unit coordinates) is an integer combination of the rows of B_save: the real membership test.
  bool isMember(const Vector<T>& v);

  // lattice/gso.cpp. `last` 0 means rank; rows that are marked valid are left alone, the others get mu,
  // bNormSq, bstarSq and their mark.
  //
  // From inner products. False at the first dependent row, whose word becomes STATUS_DEPENDENT. The rows
  // before `first` are right in value.
  bool updateGso(long first, long last);
  // All Gram-Schmidt data anew; what the listener of `consistency` would ask for.
  void orthogonalisationRefresh() override;
  // By lq_reduced and lq_full, which go on from the rows before `first`: these have to come from the same
  // factorisation. Bstar holds the Gram-Schmidt vectors behind the former, their directions behind the
  // latter. Return the first dependent row, whose word they leave alone, or 0; with failOnDependency such a
  // row fails with "Linear dependency detected - remove these first!" and "Linear dependency detected -
  // remove first!".
  long gsoByReduced(long first, long last, bool failOnDependency);
  long gsoByFull(long first, long last, bool failOnDependency);

  // lattice/lll.cpp. The rows before the first position of a call must be right in mu and bstarSq, marked or
  // not. Each row that a sweep touches is judged as a solution, so that RestartException passes; in dbl_t a
  // row operation beyond the precision gate throws PrecisionException and leaves that row half done.
  //
  // One sweep over the positions k..end (0: rank), which is no fixed point: sweepSkipped and sweepStopped
  // tell what it left. Dependent vectors are parked at the end of the range up to m (0: rank). Returns the
  // smallest position visited, at most k; k for an empty range.
  long lll(long k, long end, long m);
  // Position k size-reduced, dependent vectors moved out of its way; false when the sweep must stop.
  // `guarded` becomes true with the first vector moved: from then on no reduction lets a row's largest entry
  // grow.
  bool lllStep(long k, long m, bool& guarded);
  // True when row k changed. False too where it is dependent, which `status` tells.
  bool sizeReduce(long k, bool& guarded);
  // Exchanges two positions with all that belongs to them: rows of B and, with `consistency`, of TT[TT.MN],
  // enumCoeffs, stages, status. Clears `status` from the lower one on, unless keepStatus. Position 0 is
  // scratch.
  void swapBase(long i, long j, bool keepStatus);
  // Moves b_k, whose mu row must be valid, to the first position behind 1 where its orthogonal part is
  // shorter than the one there: that position, or k + 1 if there is none.
  long deepInsert(long k);
  void sortBasis(long m);  // rows 1..m (0: rank) ascending by squared length, heapsort

  // lattice/insertion.cpp: a combination of basis vectors, coefficients x on positions first..last, enters
  // the basis by unimodular steps; TT, stages, status and enumCoeffs are kept in step.
  // 1: x had one unit coefficient and that vector now stands at `first`; -1: x is a true multiple of a basis
  // vector and nothing moved; 0: the caller must go on. Fails with "lattice rank is too small!" where x is
  // zero and the rows of B are dependent.
  int trivialInsert(const Vector<T>& x, long first, long last);
  // The primitive vector of x stands at `first` afterwards, the rest of the block one up; all of `status` is
  // clear. x is used up, and may be enumCoeffs. The vector is judged as a solution on the way. Fails with
  // "basis can't insert the zero vector!"; in dbl_t a coefficient beyond the precision gate throws
  // PrecisionException with "coefficient overflow" before anything moves.
  void insertCombination(Vector<T>& x, long first, long last);
  // The vector stands at `pos` afterwards, but for one that trivialInsert takes: at `first`, or dropped.
  void replaceCombination(Vector<T>& x, long first, long last, long pos);

  // lattice/enumeration.cpp: BKZ reduction with blocks of `beta` when target is null; otherwise the search
  // for lattice vectors close to the target (weighted coordinates, dim entries). Each block minimum is judged
  // as a solution at once. Throws what a sweep, an insertion or the check throw.
  void enumerate(const Vector<T>* target);

  // lattice/kernel.cpp: for the lattice of the equations, whose values are the first e = Ag.M coordinates.
  // The vectors with zero equation values stand in the rows 1..rank - e afterwards, if their rank allows;
  // weights and parameters stay. Returns TT, whose product in order, the last on the left, takes the basis as
  // it was to the one that is.
  SerializableArray<Matrix<T>> kernelReduce();

  // lattice/dependencies.cpp
  long removeDependentVectors();  // the number of vectors removed from the basis

  // program/preparation.cpp: rewrites `program` by stage one, unless that has been done, and makes the base
  // part anew from it by stage two. Without `full` (which also bounds the combined target) and `force` stage
  // one is left out, except where the base part has a bounded target without its row. Fails and throws as the
  // stages do.
  void prepare(bool full, bool force);

  // program/generation.cpp
  // The lattice of the prepared base part: through the kernel of the equations where there are any. What was
  // found in the equation lattice, and the stars, are judged again in the new one. Fails with "The equation
  // system has no integer solution :(".
  void prepareLattice();
  // B_save, B, c, R, bounds and one unit transformation anew: of the equations, or of targets and rows. Fails
  // with "sol bounds error", "ineq bounds error1" and "ineq bounds error2" where a width is 0; throws
  // PrecisionException with "R overflow" and "B_save overflow".
  void generateLattice(bool equations);
  // The common multiple of all widths. lcmOfWidths: of `range` and those of the variables, with `take`; the
  // working bounds that the user left open are moved to widths that fit in any case.
  T computeRange(bool equations);
  T lcmOfWidths(T range, bool take);
  // A width near b - s with a small common multiple with `range`; s is updated in place.
  T adjustWidth(const T& range, const T& b, T& s);
  void computeNormBound();
  // lbnd and ubnd as generated or read: their copies, symmetry and norm bound, and the check mode.
  void takeBounds(long mode);
  bool programAhead() const;  // a bound of `program` moved since the basis was generated

  // program/multipliers.cpp: c, the basis and all vectors kept, as exactly as the type holds them, after a
  // conversion or a file has rounded them to 17 digits. The caller drops what was derived from the basis.
  void restoreMultipliers();

  // program/embedding.cpp: the maps between lattice vectors (unit coordinates) and variable vectors
  // A vector with the sign of inhomBase reversed is read as its negative. With keepAll the slack and
  // deviation variables stay. 1: its inhomogeneous coordinate is +-inhomBase; -1: optVec means nothing. Fails
  // without check vectors or with another dimension; throws PrecisionException with "opt_vec overflow1".
  int lat2opt(const Vector<T>& latVec, Vector<T>& optVec, bool keepAll) const;
  // optVec holds the user's variables, fixed ones included; slacks and deviations follow from the rows. With
  // `transformed` the result is in weighted coordinates. Fails with "slack variable insonsistency, s should
  // be >= 0" and as lat2opt; throws PrecisionException with "lat_vec overflow" and "sum overflow".
  void opt2lat(const Vector<T>& optVec, Vector<T>& latVec, bool transformed) const;
  // As opt2lat, but false instead of the failure, and where a slack would be fractional or a fixed variable
  // has another value: for stars and vectors that are carried over, which are dropped then.
  bool tryOpt2lat(const Vector<T>& optVec, Vector<T>& latVec, bool transformed) const;

  // program/solutions.cpp
  // The one road from search to results: membership, feasibility, the collections, the best point, the
  // bounds, the solutions. `scaled` says that the coordinates are weighted; the sign of the vector does not
  // matter. With `flag` no bound may move. Returns CHECK_ bits. Writes the .sol file where something is
  // recorded; RestartException and the end of the run come from here. Fails without check vectors; a
  // coordinate that T can't hold throws PrecisionException.
  unsigned checkSolution(const Vector<T>& latVec, DiscoveryTime time, bool flag,
                         Membership membership = Membership::unknown);
  unsigned checkSolution(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool flag,
                         Membership membership = Membership::unknown);
  // The part of it that looks at targets: h becomes w with its norms and its time, and bestSlack where it is
  // better. CHECK_FEASIBLE alone: no better than what is known.
  unsigned judgeVector(const Vector<T>& w, HeuristicVector<T, F>& h, DiscoveryTime time, bool flag);
  bool updateBounds(const Vector<T>& x);  // on `program`; true when a bound moved
  // By `snorm` and `tnorm`, or by the targets alone; always without targets.
  bool isSolution(const HeuristicVector<T, F>& h) const;
  bool addSolution(const HeuristicVector<T, F>& h, DiscoveryTime time);  // true when it was new

  // program/sol_file.cpp
  // The best point and the solutions join program.stars, which are sorted, best first, without duplicates.
  // Fails with "sol2star: lat2opt can not compute x_opt".
  void sol2star();
  // The whole file as the stars say, after sol2star unless keepStars; no stars: the file is removed. Nothing
  // happens while writing is off or nothing has changed. A file that can't be written is a warning.
  void writeSolFile(bool keepStars);
  // Nothing in a benchmark run or without a file. A damaged file ends the run.
  void readStarsFromSolFile(bool, bool);
  // Judges stars against the lattice as it stands; those that fit join program.stars. `report` logs the
  // others.
  void readmitStars(const ConversionArray<Star<T>>& candidates, bool report);
  std::string starReport() const;  // the console's report of all stars

  // program/lat_file.cpp
  void writeLatFile();  // nothing while writing is off
  // Prepares the program by the bounds of the file; the lattice is touched only when all of it could be read.
  // A file that is damaged or of another program ends the run; throws PrecisionException with "B_save
  // overflow", "lbnd overflow", "ubnd overflow" and "c overflow".
  void readLatFile();

  // program/trivial.cpp: the two corners of the bounds and the point between them. Regenerates the lattice
  // where a bound has moved since it was made.
  void checkTrivialSolutions();

  // lattice/reinstate.cpp: gives a regenerated lattice its memory back
  void reinstate(const ConversionArray<Star<T>>& records, const std::vector<Star<T>>& vectors,
                 const SortedSet<HeuristicVector<T, F>>& setA, const SortedSet<HeuristicVector<T, F>>& setB,
                 int mode);

  // heuristics/extraction.cpp
  Vector<T> extractInhom();

  // heuristics/deviations.cpp. All vectors have dim components; nothing is allocated in a measure unless the
  // vector violates no bound.
  //
  // How far each coordinate misses its bounds: the deviations that are not zero, largest first, equal ones by
  // coordinate. `vector` is in unit coordinates, with inLatticeForm in weighted ones. skipTarget leaves the
  // coordinate of a bounded target out and numbers the others from 1; otherwise that coordinate deviates by
  // the excess of the combined target over its bound. A missing bound of a variable is never violated.
  DeviationList<T> deviations(const Vector<T>& vector, bool skipTarget, bool inLatticeForm) const;
  // The measure of a vector in unit coordinates, which is measured as it stands: by its own sign.
  HeuristicDeviation<F> computeDeviation(const Vector<T>& v) const;
  // The measures of v and -v, in one pass.
  void computeDeviations(const Vector<T>& v, HeuristicDeviation<F>& plus, HeuristicDeviation<F>& minus) const;

  // heuristics/collections.cpp, all in unit coordinates
  // Measures a lattice vector and enters it in the set of its kind; null stands for the lattice's own. One
  // that is longer than normBound is refused. The lattice's own sets follow `collectLimit` here.
  void collect(const Vector<T>& w, SortedSet<HeuristicVector<T, F>>* homogeneous = nullptr,
               SortedSet<HeuristicVector<T, F>>* inhomogeneous = nullptr, DiscoveryTime time = NOW);
  // Measures and stamps v, and enters it in `set` if it beats `bound`, which is then the result. A zero
  // vector is passed over.
  bool collectIfBetter(const HeuristicDeviation<F>& bound, HeuristicVector<T, F>& v,
                       SortedSet<HeuristicVector<T, F>>& set) const;
  // Keeps w if its inhomogeneous coordinate is +-inhomBase and, with the sign of inhomBase there, its measure
  // is better than that of the best such vector so far.
  void offerInhomogeneous(const Vector<T>& w, DiscoveryTime time = NOW);

  // heuristics/trimming.cpp: bends the metric towards feasibility and reduces again. `previous` holds the
  // coordinates of the pass before; null for the driver. Checks what the reduction touches, so that
  // RestartException and PrecisionException pass.
  void trim(const Set<long>* previous);

  // heuristics/scale_steps.cpp: how a weight moves
  // One step of the weight of coordinate p away from or towards 0. Fails with "zero step inconsistency".
  void scaleStep(long p, const T& step);
  // Takes 1 off the magnitude of all other weights instead; false, and nothing changed, if one of them is too
  // small for that.
  bool normalizeScales(long p);
  void noteStep(long p, const T& step);
  static T randomSign(const T& value);  // value or -value, by one draw

  // heuristics/recombination.cpp. Candidates are combinations of lattice vectors, and each is checked:
  // solutions are recorded, and RestartException and PrecisionException pass.
  void pairwiseRecombination();
  // Copies at most `pairLimit` vectors of `source` into `destination`, spread evenly and at random, and sets
  // its limit to the number that is sought; a `pairLimit` below 1 selects nothing.
  void selectRandom(const SortedSet<HeuristicVector<T, F>>& source,
                    SortedSet<HeuristicVector<T, F>>& destination) const;

  // heuristics/sieving.cpp: the collections are read alone; what the rounds end with is checked, and the best
  // inhomogeneous vector of it offered.
  void sieve();

  // heuristics/reinsertion.cpp
  // Puts what the search remembers back into the basis: with solutions found, the next of them in turn;
  // otherwise the best slack vector, or before there was one the best inhomogeneous vector.
  void reinsertBest();
  // Brings a lattice vector, in weighted coordinates, into the basis where it is short enough. A vector that
  // is none, or a basis vector already, changes nothing.
  void insertVector(const Vector<T>& weighted);

  // heuristics/variation.cpp
  void heuristicSort();          // the rows by their deviations, best first
  void shuffleBase(long count);  // count - 1 exchanges of two rows drawn at random
  void variateBase();            // the harder the longer there was no primary improvement

  // driver/restart.cpp and driver/report.cpp: where the search calls upward
  //
  // What was found is written. Then, if `finishEnabled`: with `terminate`, or in the last iteration that
  // `iters` allows, the run ends; otherwise the lattice is regenerated, and RestartException leaves the step.
  // Returns only while `finishEnabled` is off, and under a front end, where the end stops the run instead.
  void restartHandling(bool terminate);
  // The lattice of `program` as it stands now, with what is remembered of the old one, and its .lat file. The
  // basis starts anew: no index, coordinate or weight of before holds. Throws PrecisionException; the stars
  // are in hand then, the rest is not to be used.
  void regenerateLattice();
  // The final report and the end of the process, by SIGTERM; under a front end the run state "stopped".
  void terminateRun();
  // What an iteration prints, which depends on `verb`; at 0 only what has changed since the last call.
  std::string iterationReport();
  // The best target, where there are target rows; the number of solutions and when the first were found,
  // where there are any.
  std::string solutionSummary() const;

 private:
  // program/solutions.cpp: scratch of the check, for it sees every vector that reduction touches.
  Vector<T> candidate_;
  // heuristics/collections.cpp: scratch of a vector that may enter.
  HeuristicVector<T, F> measured_;

  bool isRuledOut(const Vector<T>& vec, bool scaled) const;
  void takeCandidate(const Vector<T>& vec, bool scaled);
  bool isFeasible(const Vector<T>& w) const;
  bool isKnown(const Vector<T>& w) const;
  unsigned checkCandidate(DiscoveryTime time, bool flag, Membership membership);
  unsigned recordCandidate(const HeuristicVector<T, F>& h, DiscoveryTime time, unsigned result, bool changed);
  void copyResults(const Lattice& source);
  void copyBasis(const Lattice& source);
  void copyDerived(const Lattice& source);
  template <class U>
  void convertResults(const Lattice<U, F>& other);
  template <class U>
  void convertBasis(const Lattice<U, F>& other);
  template <class U>
  void convertDerived(const Lattice<U, F>& other);
  // The steps of the sweep.
  bool orthogonaliseRow(long k);
  bool reduceAgainst(long k, long j, bool guarded);
  void blend(long k, long m);
  bool stepAt(long k, long m, bool& guarded, long depth);
  long lovaszMove(long pos);
  // The steps of checkConsistency.
  bool rebuildTransformation(const Matrix<T>& U);
  bool settleTransformation(const Matrix<T>& U);
  void rebaseOn(const Matrix<T>& U);
  void restoreSavedBasis();
  // Sets bits of a row's word; STATUS_DEPENDENT, which stands alone, goes first.
  void setStatusBits(long i, short bits) {
    if (status[i] == STATUS_DEPENDENT) status.data[i] = 0;
    status.data[i] = static_cast<short>(status.data[i] | bits);
  }
  // Row `first` and the ones behind it are no longer rows of a factorisation; their Gram-Schmidt data stay.
  void forgetFactorisation(long first);
  // mu row i from lqL, and its word.
  void takeFactorRow(long i, short bits);
  bool hasStatus(long i, short mask) const { return (status[i] & mask) == mask; }
  // lattice/lll.cpp: swapBase without its rule for `status`, whose two words are exchanged alone.
  void exchangePositions(long i, long j);
  // lattice/insertion.cpp
  void addRow(long i, const T& q, long j);
  void reduceLeadingCoefficient(Vector<T>& x, long first, long top);
  void combineIntoScratch(const Vector<T>& x, long first, long last);
  void combineTransformation(const Vector<T>& x, long first, long last);
  void replaceRow(const Vector<T>& x, long first, long last, long p);
  // heuristics/deviations.cpp
  long targetCoordinates() const;
  T targetExcess(const Vector<T>& v) const;
  void rateFeasible(const Vector<T>& v, HeuristicDeviation<F>& d) const;
  // heuristics/collections.cpp
  void followLimit(SortedSet<HeuristicVector<T, F>>& set) const;
  // heuristics/trimming.cpp
  long carrierOfInhom() const;
  void trimAgainst(const Set<long>* previous);
  void scaleCoordinates(const Set<long>& coordinates);
  void translateCoordinates(const Set<long>& coordinates);
  void reduceTrimmed();
  // heuristics/scale_steps.cpp
  void scaleBeyondLimit(long p, const T& value, const T& step);
  // lattice/enumeration.cpp
  struct Block;
  void firstReduction();
  void enterMode(Block& block);
  void openBlock(Block& block);
  void setUpStages(Block& block);
  void searchBlock(Block& block);
  bool blockEnded(Block& block, long t);
  void writeBackStages(const Block& block);
  void newMinimum(Block& block);
  bool insertFind(Block& block);
  bool repairAfterFind(Block& block);
  void passBlock(Block& block);
  bool orthogonaliseBlock(Block& block);
  void targetCoordinates(Vector<F>& out, const Vector<T>& target, long first, long last) const;
  void composeAndCheck(const Vector<T>& coeffs, long first, long last);
};

// Orthogonal factorisations M = L Q in F of the rows of M (lattice/lq_reduced.cpp, lattice/lq_full.cpp). kk
// is the first row to compute, `end` the last (0: all). For kk > 1 all other arguments are as the call that
// computed the rows before left them.
//
// lq_reduced: Q has `end` orthogonal rows, norms their squared lengths, L a unit diagonal. stages[l] holds
// the rows behind the first l - 1 directions, row r of it for r >= l. Returns 0, or the first row whose
// orthogonal part is zero: that row of Q and norms is written, L and the levels behind it are not. Fails with
// "lq_reduced: kk is invalid (< 1)", "lq_reduced: dimension mismatch".
//
// lq_full: Q is square with orthonormal rows, L has the columns of M, and stages[t] is the product of the
// first t reflections, min(columns - 1, end) in all; a dependent row shows as a vanishing diagonal entry of
// L. Fails with "lq_full: kk is invalid (< 1)", "lq_full: end index overflow", "lq_full: dimension mismatch".
template <class T, class F>
long lq_reduced(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages,
                Vector<F>& norms, long kk, long end);
template <class T, class F>
void lq_full(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages, long kk,
             long end);

}  // namespace latbox
