// The lattice object on which every reduction and heuristic works: its parts, each of which keeps its own
// invariants, and the operations that concern more than one of them.
//
//   basis.h              the rows, their marks, the transformation, the cache of coordinates
//   gram_schmidt.h       the orthogonalisation of the rows; a Basis with it
//   weights.h            between unit and weighted coordinates
//   finds.h              collections, best vectors, solutions
//   enumeration_state.h  scratch of the block enumeration
//   check_vectors.h      what a vector is judged by (model/)
//   tessik.h             the program, as the lattice was made of it (model/)
//
// T is the number type of the exact data (dbl_t or QQ), F (always dbl_t) that of what guides the reduction.
// All arrays are 1-based: `rank` rows, `dim` coordinates, of which `dim` is the inhomogeneous one. A lattice
// belongs to the solver thread; other threads read its parameters and mainVars alone.
//
// Heuristics are no members: each is a function over a lattice in a header of its own (heuristics/). What is
// declared here is defined in the file that its group names. Some of these files lie in layers above: this is
// how the layers below call them.
#pragma once

#include <memory>
#include <string>

#include "lattice/both_types.h"
#include "lattice/judgement.h"
#include "lattice/lattice_state.h"
#include "lattice/search_events.h"
#include "lattice/search_state.h"
#include "numbers/number.h"
#include "params/mutex_vars.h"
#include "params/params.h"

namespace latbox {

template <class T>
class CandidateCheck;

template <class T, class F>
class Lattice : public LatticeState<T, F>, public ParamOwner {
 public:
  using LatticeState<T, F>::program;
  using LatticeState<T, F>::latFile;

  ExtendedParams<T> params{this};
  MainMutexVars mainVars;
  SearchState<T> search;
  std::shared_ptr<RunOutput> output = std::make_shared<RunOutput>();
  SearchEvents<T, F>* events = nullptr;  // outlives the lattice; null: nobody listens
  long sweepSkipped = 0;                 // positions that the last sweep left untested
  bool sweepStopped = false;             // the last sweep ended by `btime` or by a step that gave up

  // lattice/lattice.cpp
  Lattice();
  Lattice(const Lattice& other);
  // State, parameters and mainVars by value, deep; the storage of this object is reused.
  Lattice& operator=(const Lattice& other);
  // The state; the parameters too unless keepParameters. mainVars, search and output stay in either case;
  // `events` follows the source in a copy, not in a conversion.
  void copyFrom(const Lattice& source, bool keepParameters);
  // State, parameters and mainVars from the lattice of the other precision, but for what can be recomputed.
  // Throws: PrecisionException with "Precision lost during conversion" where a value does not convert and
  // come back.
  template <class U>
  void convertFrom(const Lattice<U, F>& other);
  // Back to the state of no file; parameters, mainVars, search and output stay.
  void reinitialise();
  // Basis, weights, check vectors and work data for a lattice of this size, all zero, weights 1. Finds stay.
  void resizeLattice(long newRank, long newDim);
  // A new origin in unit coordinates, of the present `dim`, which is the basis too: work data start anew,
  // weights stay.
  void enterBasis(const Matrix<T>& unit);
  bool consistencyOn() const { return params.consistency.get(); }
  long verb() const { return params.verb.get(); }
  // The discovery time to record: the given one, or that of now.
  long stamp(DiscoveryTime time) const;

  // lattice/weight_changes.cpp: the basis keeps its unit coordinates, and all of `status` is cleared; nothing
  // happens where the weight, which may not be 0, has this value. A shift of coordinate `dim` fails with "The
  // inhomogenous component can not get translated!". resetFactors: weights 1, their steps forgotten, the
  // limit of trimming put back.
  void setScale(long p, const T& value);
  void setFirstScales(const Vector<T>& values);  // of as many coordinates, at once
  void setTranslation(long p, const T& value);
  void resetScales(bool resetFactors, bool resetTranslation) override;

  // lattice/consistency.cpp
  // Coordinates of a vector in unit coordinates with respect to the rows of B_save or of B; throughTT takes
  // those of B on to B_save. False where there are none or they are not all integers.
  // Throws: PrecisionException with "transformation coord error" where T can't hold one.
  bool coordinates(const Vector<T>& unitVector, Vector<T>& result, bool useSaved, bool throughTT = false);
  // Coordinates of v (unit coordinates) with respect to B_save; with `check` TT follows from B first, and
  // with `positive` -v is meant where the inhomogeneous coordinate of v is against the sign of inhomBase.
  // Throws: PrecisionException with "rt overflow" and, where there are none, "transformation coord error".
  void transformationCoordinates(const Vector<T>& v, Vector<T>& result, bool check, bool positive);
  // Makes sure that B is a basis of the lattice of B_save. With `consistency` what TT makes of B_save takes
  // the place of a basis that differs; without it TT follows from B, and where that fails B goes back to
  // B_save and nothing else is done. Then, with `rebase`, B becomes B_save and a unit matrix the last
  // transformation; the .lat file is written unless keepFile.
  // Throws: PrecisionException with "unimodular error", "transformation overflow", "base matrix overflow".
  // Fails with: "In the non-aardal case TT.MN should always be == 1", and on a rectangular transformation.
  void checkConsistency(bool rebase, bool keepFile);
  // True when v (unit coordinates) is an integer combination of the rows of B_save: the real membership test.
  bool isMember(const Vector<T>& v);

  void orthogonalisationRefresh() override;  // all Gram-Schmidt data anew

  // lattice/lll.cpp. Each row that a sweep touches is judged as a solution.
  // Requires: the rows before the first position of a call are right in mu and bstarSq, marked or not.
  // Throws: RestartException; in dbl_t, PrecisionException where a row operation is beyond the precision
  // gate: that row is half done then.
  //
  // One sweep over the positions k..end (0: rank), which is no fixed point: sweepSkipped and sweepStopped
  // tell what it left. Dependent vectors are parked at the end of the range up to m (0: rank). Returns the
  // smallest position visited, at most k; k for an empty range. At verb above 1 it tells each hour where it
  // stands, unless `report` is off.
  long lll(long k, long end, long m, bool report = true);
  // Position k size-reduced, dependent vectors moved out of its way; false when the sweep must stop.
  // `guarded` becomes true with the first vector moved: from then on no reduction lets a row's largest entry
  // grow.
  bool lllStep(long k, long m, bool& guarded);
  // True when row k changed. False too where it is dependent, which `status` tells.
  bool sizeReduce(long k, bool& guarded);
  // Exchanges two positions with all that belongs to them. Clears `status` from the lower one on, unless
  // keepStatus.
  void swapBase(long i, long j, bool keepStatus);
  // Moves b_k, whose mu row must be valid, to the first position behind 1 where its orthogonal part is
  // shorter than the one there: that position, or k + 1 if there is none.
  long deepInsert(long k);
  void sortBasis(long m);  // rows 1..m (0: rank) ascending by squared length, heapsort

  // lattice/insertion.cpp: a combination of basis vectors, coefficients x on positions first..last, enters
  // the basis by unimodular steps.
  // 1: x had one unit coefficient and that vector now stands at `first`; -1: x is a true multiple of a basis
  // vector and nothing moved; 0: the caller must go on.
  // Fails with: "lattice rank is too small!" where x is zero and the rows of B are dependent.
  int trivialInsert(const Vector<T>& x, long first, long last);
  // The primitive vector of x stands at `first` afterwards, the rest of the block one up; all of `status` is
  // clear. x is used up, and may be enumCoeffs. The vector is judged as a solution on the way.
  // Throws: in dbl_t, PrecisionException with "coefficient overflow" beyond the gate, before anything moves.
  // Fails with: "basis can't insert the zero vector!".
  void insertCombination(Vector<T>& x, long first, long last);
  // The vector stands at `pos` afterwards, but for one that trivialInsert takes: at `first`, or dropped.
  void replaceCombination(Vector<T>& x, long first, long last, long pos);

  // lattice/enumeration.cpp: BKZ reduction with blocks of `beta` when target is null; otherwise the search
  // for lattice vectors close to the target (weighted coordinates, dim entries). Each block minimum is judged
  // as a solution at once. Throws what a sweep, an insertion or the check throw.
  void enumerate(const Vector<T>* target);
  void reduce();  // what `eenum` asks for: block enumeration, or one sweep

  // lattice/kernel.cpp: for the lattice of the equations, whose values are the first e = Ag.M coordinates.
  // The vectors with zero equation values stand in the rows 1..rank - e afterwards, if their rank allows;
  // weights and parameters stay. Returns TT, whose product in order, the last on the left, takes the basis as
  // it was to the one that is.
  SerializableArray<Matrix<T>> kernelReduce();
  long removeDependentVectors();  // lattice/dependencies.cpp: the number of vectors removed

  // lattice/multipliers.cpp: c, the basis and all finds kept, as exactly as the type holds them, after a
  // conversion or a file has rounded them to 17 digits. Marks stay: the difference lies below what they tell.
  void restoreMultipliers();

  // lattice/deviations.cpp. All vectors have dim components; nothing is allocated in a measure unless the
  // vector violates no bound.
  //
  // How far each coordinate misses its bounds: the deviations that are not zero, largest first, equal ones by
  // coordinate. `vector` is in unit coordinates, with inLatticeForm in weighted ones. skipTarget leaves the
  // coordinate of a bounded target out and numbers the others from 1; otherwise that coordinate deviates by
  // the excess of the combined target over its bound. A missing bound of a variable is never violated.
  DeviationList<T> deviations(const Vector<T>& vector, bool skipTarget, bool inLatticeForm) const;
  // The measure of a vector in unit coordinates, as it stands: by its own sign; and those of v and -v, in one
  // pass.
  HeuristicDeviation<F> computeDeviation(const Vector<T>& v) const;
  void computeDeviations(const Vector<T>& v, HeuristicDeviation<F>& plus, HeuristicDeviation<F>& minus) const;

  // lattice/collections.cpp, all in unit coordinates
  // Measures a lattice vector and enters it in the set of its kind; null stands for the lattice's own. One
  // that is longer than normBound is refused. The lattice's own sets follow `collectLimit` here.
  void collect(const Vector<T>& w, SortedSet<HeuristicVector<T, F>>* homogeneous = nullptr,
               SortedSet<HeuristicVector<T, F>>* inhomogeneous = nullptr, DiscoveryTime time = NOW);
  // The same for a vector that has been measured and is not too long.
  void collectMeasured(const Vector<T>& w, const HeuristicDeviation<F>& deviation,
                       SortedSet<HeuristicVector<T, F>>* homogeneous = nullptr,
                       SortedSet<HeuristicVector<T, F>>* inhomogeneous = nullptr, DiscoveryTime time = NOW);
  // Measures and stamps v, and enters it in `set` if it beats `bound`, which is then the result. A zero
  // vector is passed over.
  bool collectIfBetter(const HeuristicDeviation<F>& bound, HeuristicVector<T, F>& v,
                       SortedSet<HeuristicVector<T, F>>& set) const;
  // Keeps w if its inhomogeneous coordinate is +-inhomBase and, with the sign of inhomBase there, its measure
  // is better than that of the best such vector so far.
  void offerInhomogeneous(const Vector<T>& w, DiscoveryTime time = NOW);
  // Its parts, for a caller that has a measure: whether w carries +-inhomBase, and the rest where it has the
  // sign of inhomBase there.
  void offerMeasured(const Vector<T>& w, const HeuristicDeviation<F>& deviation, DiscoveryTime time);

  // program/candidate_check.cpp: the one road from search to results. `scaled` says that the coordinates are
  // weighted; the sign of the vector does not matter. With `flag` no bound may move. Returns CHECK_ bits.
  // Writes the .sol file where something is recorded; RestartException and the end of the run come from here.
  // Fails without check vectors; a coordinate that T can't hold throws PrecisionException.
  unsigned checkSolution(const Vector<T>& latVec, DiscoveryTime time, bool flag,
                         Membership membership = Membership::unknown);
  unsigned checkSolution(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool flag,
                         Membership membership = Membership::unknown);
  // The same for a combination in unit coordinates that has been measured: nothing is measured again.
  unsigned checkMeasured(const Vector<T>& vec, const BothDeviations<F>& measures, DiscoveryTime time);

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

  void writeLatFile();  // program/lat_file.cpp: nothing while writing is off

 private:
  HeuristicVector<T, F> measured_;  // lattice/collections.cpp: scratch of a vector that may enter
  Vector<T> candidate_;  // program/candidate_check.cpp: scratch of the check, which sees every vector
  friend class CandidateCheck<T>;

  // What concerns one part of a position or a weight alone; swapBase, setScale and the like concern all.
  using LatticeState<T, F>::swap;
  using LatticeState<T, F>::resize;
  using LatticeState<T, F>::setOrigin;
  using LatticeState<T, F>::setWeight;
  using LatticeState<T, F>::setShift;
  using LatticeState<T, F>::resetWeights;
  using LatticeState<T, F>::resizeWeights;
  using LatticeState<T, F>::resizeStages;
  using LatticeState<T, F>::exchangeStages;
  void resizeWork();
};

}  // namespace latbox
