// Vectors and matrices modulo a prime.
#pragma once

#include <cstdint>
#include <vector>

#include "lib/modular.h"
#include "numbers/matrix.h"

namespace latbox {

// Every entry by `modulo` of number.h. False, and `residues` in part, where one has no residue. Elements are
// numbered from 1 on either side.
template <class T>
bool residuesOf(const Vector<T>& v, std::uint64_t p, std::vector<std::uint64_t>& residues);
template <class T>
bool residuesOf(const Matrix<T>& m, std::uint64_t p, ModularMatrix& residues);

}  // namespace latbox
