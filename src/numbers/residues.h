// Vectors and matrices modulo a prime.
#pragma once

#include <cstdint>
#include <vector>

#include "lib/modular.h"
#include "numbers/matrix.h"

namespace latbox {

// Whether a dbl_t that is no whole number has a residue: that of the QQ it converts to. A QQ has one unless
// it is infinite or p divides its denominator.
enum class Fractions { refused, allowed };

// Every entry by `modulo` of number.h. False, and `residues` in part, where one has no residue. Elements are
// numbered from 1 on either side.
template <class T>
bool residuesOf(const Vector<T>& v, std::uint64_t p, std::vector<std::uint64_t>& residues,
                Fractions fractions = Fractions::refused);
template <class T>
bool residuesOf(const Matrix<T>& m, std::uint64_t p, ModularMatrix& residues);

}  // namespace latbox
