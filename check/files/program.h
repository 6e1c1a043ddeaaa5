// The program as its file states it.
#pragma once

#include <string_view>
#include <vector>

#include "check/files/scanner.h"

namespace latbox::check {

// Find x with Ag x = bg, lu <= Au x <= ru, lx <= x <= rx, each x[i] a multiple of 10^-dx[i]; judge it by the
// rows At x, each minimised (dt -inf), maximised (dt inf) or brought to dt. Numbering begins at 0.
struct Program {
  Vector dt;
  // Thresholds; nothing here depends on them.
  Vector kt;
  Matrix At;
  Matrix Ag;
  std::vector<Rational> bg;
  Matrix Au;
  Vector lu;
  Vector ru;
  // Decimal digits, at least 0.
  std::vector<long> dx;
  Vector lx;
  Vector rx;
  // Text other than blanks and comments stands behind the last item. Nothing reads it.
  bool trailingText = false;

  std::size_t variables() const { return rx.size(); }
};

// More digits than this the solver refuses.
inline constexpr long MAX_DIGITS = 10000;

// Reads an .opt text. Everything the solver refuses on reading is refused: dimensions that do not fit,
// infinities in the wrong place, crossed bounds. So are digits that are no whole number, and numbers that it
// takes although they are garbage (1.5/2). Throws Unreadable.
Program readProgram(std::string_view text);

}  // namespace latbox::check
