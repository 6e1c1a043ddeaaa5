#include "program/target_order.h"

#include "numbers/number.h"

namespace latbox {
namespace {

// Beyond that many digits no number below 10^18 has a grid that a dbl_t tells from others.
constexpr long DIGITS_LIMIT = 18;
// What standard precision carries of a multiplier such as 4/3, times the range: more is no rounding.
constexpr dbl_t GRID_TOLERANCE = 1e-6L;

bool isWhole(const Matrix<dbl_t>& rows) {
  for (long i = 1; i <= rows.M; ++i)
    for (long j = 1; j <= rows.N; ++j)
      if (!isInteger(rows.rows[i].data[j])) return false;
  return true;
}

// x as a multiple of 10^-digits; false where it is none.
bool onGrid(dbl_t x, dbl_t digits, QQ& exact) {
  const long places = digits > 0 ? static_cast<long>(digits) : 0;
  if (places > DIGITS_LIMIT) return false;
  const dbl_t scaled = x * powerOfTen<dbl_t>(places);
  const dbl_t nearest = roundNearest(scaled);
  if (!(abs(nearest) < 0x1p62L) || abs(scaled - nearest) > GRID_TOLERANCE) return false;
  exact = QQ(static_cast<long long>(nearest)) / powerOfTen<QQ>(places);
  return true;
}

bool exactTargetNorm(const Tessik<dbl_t>& program, const Vector<dbl_t>& x, QQ& norm) {
  norm = QQ(0);
  for (long j = 1; j <= x.MN; ++j) {
    QQ value, weight;
    for (long i = 1; i <= program.At.M; ++i)
      if (program.At[i][j] != 0) weight += QQ(program.targetSign(i) * program.At[i][j]);
    if (weight.isExactZero()) continue;
    // A fixed variable has the value that was read; its digits may be anything. Bounds that finds have moved
    // may meet, too, and fix nothing.
    if (program.fx[j] == FreedomDegree::bounded && program.lx[j] == program.rx[j])
      value = QQ(program.lx[j]);
    else if (!onGrid(x[j], program.dx[j], value))
      return false;
    QQ::addmul(norm, weight, value);
  }
  return true;
}

}  // namespace

template <>
int compareTargetNorms(const Tessik<QQ>&, const Vector<QQ>&, const QQ& a, const Vector<QQ>&, const QQ& b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

template <>
int compareTargetNorms(const Tessik<dbl_t>& program, const Vector<dbl_t>& x, const dbl_t& a,
                       const Vector<dbl_t>& y, const dbl_t& b) {
  if (isInfinite(a) || isInfinite(b) || !isZero(a - b)) return a < b ? -1 : (b < a ? 1 : 0);
  // Sums of whole numbers within the gate are exact.
  if (a == b && isWhole(program.At)) return 0;
  QQ exactA, exactB;
  if (!exactTargetNorm(program, x, exactA) || !exactTargetNorm(program, y, exactB)) return 0;
  return exactA < exactB ? -1 : (exactB < exactA ? 1 : 0);
}

}  // namespace latbox
