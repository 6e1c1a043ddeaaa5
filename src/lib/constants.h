// The number type of standard precision and the constants that every layer shares.
#pragma once

namespace latbox {

// Standard precision: 80-bit extended floating point on x86-64.
using dbl_t = long double;

// Significant decimal digits that the system trusts in a dbl_t.
inline constexpr unsigned char PRECISION_DIGITS = 18;

// Twice the decimal digits of one limb of a ZZ.
inline constexpr unsigned char ZZ_DIGITS = 18;

// The version that the banner shows and that a solution file names as the finder of a solution.
inline constexpr const char* VERSION = "2.2.2";

// The one tolerance: 1 / 10^(PRECISION_DIGITS / 2).
inline constexpr dbl_t EPS = 1.0L / 1e9L;

}  // namespace latbox
