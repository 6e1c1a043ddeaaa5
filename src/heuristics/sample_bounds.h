// How many positions a random sample must draw from the wider range so that it can be expected to come out
// short (after C. P. Schnorr, "Lattice reduction by random sampling and birthday methods", 2003).
//
// Positions are those of the basis; r are the squared Gram-Schmidt lengths of its rows 1..m.
// Requires: 1 <= k <= m <= rank; r is valid.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Nearly 1: a sample must fall below what it is to replace by more than the tolerance.
inline constexpr dbl_t SAMPLE_DELTA = 1 - EPS;

// The expected squared length of a sample when the squared lengths a[1..j-1] before position j fall off by
// the factor x per position: a coefficient within +-1/2 counts 1/12 of its squared length, one of the last u
// before m, within +-1, counts 1/3, and position m counts whole.
// Requires: 1 <= j, 0 <= u < m, a of length m.
template <class T>
T sampleLength(const Vector<T>& a, long j, long u, long m, const T& x);

// The binary logarithm, rounded down, of the share of the samples that reach `target` by the fall-off before
// j: -1 if all are expected to, -m if none.
template <class T>
T sampleBits(const Vector<T>& a, long j, long u, long m, const T& target);

// The best sampleBits of all j from k to m - u, with r[k..m-u-1] in descending order.
// Requires: u < m.
template <class T, class F>
T sampleEstimate(const Lattice<T, F>& lattice, long u, long k, long m, const T& target);

// The least u from k on with enough samples to reach SAMPLE_DELTA * r[k], at most m; k if k >= m.
template <class T, class F>
long freeBound(const Lattice<T, F>& lattice, long k, long m);

}  // namespace latbox
