// The basis of the lattice and what must never lag behind it: the marks of its rows, the transformation that
// leads to it from the basis as generated, and the factorisation that coordinates are solved by.
//
// Everyone may read the members; only the operations of this class change them, and each of them keeps marks,
// transformation and cache in step, but for what its contract asks of the caller. (`rows` and `data` of a
// container reach through const: they are for reading, too.) B is in weighted coordinates, B_save and TT in
// unit coordinates (weights.h). Rows and coordinates are numbered from 1; row 0 of B, and of a
// transformation, is scratch.
#pragma once

#include "lattice/coordinates/solver.h"
#include "numbers/matrix.h"
#include "params/param.h"

namespace latbox {

struct BasisAccess;

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

template <class T>
class Basis {
  // What a copy carries; of the solver its copy drops the caches.
  struct State {
    long rank = 0;
    long dim = 0;
    Matrix<T> B, B_save;
    SerializableArray<Matrix<T>> TT;
    Array<short> status;
    long marked = 0;  // no row above has a word other than 0
    bool blended = false;
    CoordSolver<T> coordSolver;
  };
  State s_;

 public:
  const long& rank = s_.rank;                      // number of rows
  const long& dim = s_.dim;                        // number of coordinates; `dim` is the inhomogeneous one
  const Matrix<T>& B = s_.B;                       // current basis, weighted coordinates
  const Matrix<T>& B_save = s_.B_save;             // basis as generated or read, unit coordinates
  const SerializableArray<Matrix<T>>& TT = s_.TT;  // transformations; TT[TT.MN] * B_save = unscaled(B)
  const Array<short>& status = s_.status;          // what is valid per row
  const bool& blended = s_.blended;                // STATUS_DEPENDENT survives invalidation while set

  Basis() = default;
  // The members above must stay those of this object; whether transformations are recorded is its owner's
  // matter.
  Basis(const Basis& other) : s_(other.s_) {}
  Basis& operator=(const Basis& other) {
    s_ = other.s_;
    return *this;
  }
  ~Basis() = default;
  // Every value from the other number type; caches are dropped.
  // Throws: PrecisionException with "Precision lost during conversion".
  template <class U>
  void convertFrom(const Basis<U>& other);

  // Whether TT follows each row operation: read at each of them, for the operator may change it. Without an
  // option nothing is recorded.
  // Requires: `option` outlives the object.
  void recordBy(const Param<bool>& option) { recording_ = &option; }
  bool recording() const { return recording_ != nullptr && recording_->get(); }

  // Shape rank x dim, all zero, no transformation, no marks.
  void resize(long newRank, long newDim);
  // A new origin: B_save, and in weighted coordinates B; one unit transformation, no marks.
  // Requires: both have one shape.
  void setOrigin(const Matrix<T>& unit, const Matrix<T>& weighted);

  // --- the operations on rows ---

  // Exchanges two positions with their words; what lies from the lower one on is invalidated (from j on for i
  // = 0, the scratch row), unless keepMarks.
  // Requires: with keepMarks, one without it that covers the positions, before a mark is read.
  void swap(long i, long j, bool keepMarks = false);
  // The same for the recorded transformation alone, while none is recorded otherwise.
  void recordSwap(long i, long j);
  // b_i -= q b_j.
  // Throws: in dbl_t, PrecisionException where an entry is beyond the precision gate; row i is half done
  // then.
  void subtract(long i, const T& q, long j);
  // b_p := sum of x[i] b_i over first..last.
  // Requires: x[p] is 1 or -1.
  // Throws: as `subtract`.
  void replace(long p, const Vector<T>& x, long first, long last);
  // Row 0 := that sum for any x, and returns it; recorded too once `recordCombined` is called.
  // Throws: as `subtract`.
  const Vector<T>& combine(const Vector<T>& x, long first, long last);
  void recordCombined(const Vector<T>& x, long first, long last);
  // Other rows in weighted coordinates.
  // Requires: TT[TT.MN] already tells how they come from B_save.
  void assignAll(const Matrix<T>& weighted);
  // The same rows under other weights: what is in unit coordinates stays.
  // Requires: the shape of the basis.
  void reweigh(const Matrix<T>& weighted);
  // Origin and rows without the roundings that they carried.
  // Requires: these lie below what marks and transformation tell.
  void restoreDigits(const Matrix<T>& unit, const Matrix<T>& weighted);

  // --- marks ---

  bool hasStatus(long i, short mask) const { return (s_.status.data[i] & mask) == mask; }
  void setStatusBits(long i, short bits);
  void setDependent(long i);
  void clearStatus();  // every word 0
  // Words from `from` on to 0, except that STATUS_DEPENDENT behind position 1 stays while `blended`.
  void invalidateFrom(long from);
  // Rows from `first` on are no longer rows of a factorisation; their Gram-Schmidt data stay.
  void forgetFactorisation(long first);
  void setBlended(bool on);
  // Nothing that was computed from the rows holds any more.
  void forgetDerived();

  // --- coordinates and transformations (transformation.cpp) ---

  // Integer coordinates of v (unit coordinates) with respect to B_save; to `rows` in currentCoordinates.
  // False where there are none.
  // Requires: `rows` is unscaled(B).
  // Throws: PrecisionException with "transformation coord error" where T can't hold one.
  bool savedCoordinates(const Vector<T>& v, Vector<T>& result);
  bool currentCoordinates(const Vector<T>& v, const Matrix<T>& rows, Vector<T>& result);
  // Appends a unit matrix to TT, or with reuseIdentity keeps a last one that is a unit matrix. Warns above
  // T_MAT_NBR.
  void newTransformation(bool reuseIdentity);
  // TT[TT.MN] from `unit`. False, and TT in part, where a row is not in the lattice.
  // Requires: `unit` is the basis in unit coordinates.
  bool deriveTransformation(const Matrix<T>& unit);
  // Entries of TT[TT.MN] that are zero by the tolerance become 0; then whether it is unimodular.
  // Fails with: "Matrix: a non-quadratic matrix determinant is not defined".
  bool isTransformationUnimodular();
  // TT[TT.MN] * B_save.
  // Throws: PrecisionException with "transformation overflow" where a dbl_t would round it.
  Matrix<T> transformedOrigin() const;
  // `unit` becomes the origin, and what follows is recorded in a matrix of its own.
  // Requires: `unit` is the basis in unit coordinates.
  // Throws: PrecisionException with "base matrix overflow" and "transformation overflow".
  void rebase(const Matrix<T>& unit);
  // Back to the origin.
  // Requires: `weighted` is B_save in weighted coordinates.
  void restoreOrigin(const Matrix<T>& weighted);

 private:
  const Param<bool>* recording_ = nullptr;
  Matrix<T>& transformation() { return s_.TT[s_.TT.MN]; }
  void takeRows(const Matrix<T>& weighted);
  bool noMarkBehind(long last) const;  // for an assertion

  template <class U>
  friend class Basis;
  friend struct BasisAccess;  // of the tests, which damage what only damage from outside can break
};

}  // namespace latbox
