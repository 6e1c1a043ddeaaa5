// The Gram-Schmidt data of the basis, and which rows of them are valid.
//
// A row's data are valid where its word has STATUS_GSO: mu row, bNormSq, bstarSq. A row that is not marked
// may be right in value all the same: a row operation clears marks, and what it did not touch stays. The
// arrays of the two factorisations (orthogonal_factorisation.h) hold as many leading rows as carry STATUS_LQ
// or STATUS_FULL.
//
// F (always dbl_t) is the number type of what guides the reduction: nothing here decides about a result.
#pragma once

#include "lattice/basis.h"

namespace latbox {

template <class T, class F>
class GramSchmidt : public Basis<T> {
 public:
  Matrix<F> mu;                                // rank x rank; mu[i][i] = 1, zero above the diagonal
  Vector<F> bstarSq;                           // squared lengths of the Gram-Schmidt vectors
  Vector<T> bNormSq;                           // squared lengths of the rows of B; exact in QQ
  Matrix<F> Bstar;                             // orthogonal vectors of the factorisation that was made last
  SerializableArray<Matrix<F>> lqStages;       // levels of lq_reduced
  Vector<F> lqNorms;                           // squared norms of lq_reduced
  SerializableArray<Matrix<F>> lqReflections;  // products of the reflections of lq_full
  Matrix<F> lqL;                               // lower factor of both

  GramSchmidt() = default;
  GramSchmidt(const GramSchmidt& other) : Basis<T>() { *this = other; }
  // Of the factorisations only what the words mark valid.
  GramSchmidt& operator=(const GramSchmidt& other);
  ~GramSchmidt() = default;
  // mu, bstarSq and the words, but for those of the factorisations; lengths follow by measureRows once B is
  // final.
  template <class U>
  void convertFrom(const GramSchmidt<U, F>& other);

  // All data for the shape of the basis, zero; no mark is touched.
  void resizeWork();
  void measureRows();  // bNormSq of every row

  // `last` 0 means rank; rows that are marked valid are left alone, the others get mu, bNormSq, bstarSq and
  // their mark.
  //
  // From inner products. False at the first dependent row, whose word becomes STATUS_DEPENDENT.
  // Requires: the rows before `first` are right in value.
  bool updateGso(long first, long last);
  // By lq_reduced and lq_full, which go on from the rows before `first`. Bstar holds the Gram-Schmidt vectors
  // behind the former, their directions behind the latter. Return the first dependent row, whose word they
  // leave alone, or 0.
  // Requires: the rows before `first` come from the same factorisation.
  // Fails with: under failOnDependency, at such a row, "Linear dependency detected - remove these first!" and
  // "Linear dependency detected - remove first!".
  long gsoByReduced(long first, long last, bool failOnDependency);
  long gsoByFull(long first, long last, bool failOnDependency);
  // updateGso for row k, and where that meets a dependency the factorisation. False where k is dependent.
  bool orthogonaliseRow(long k);

  // b_k -= q b_j with mu row k in step.
  // Requires: q is a whole number, j < k.
  // Throws: as Basis::subtract.
  void reduceRow(long k, F q, long j);

 private:
  // mu row i from lqL, and its word.
  void takeFactorRow(long i, short bits);
};

}  // namespace latbox
