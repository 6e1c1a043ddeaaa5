// The .opt file: ten or eleven bracketed items in a fixed order, checked in the order in which they come.
#include <fstream>
#include <vector>

#include "lib/failure.h"
#include "lib/os/file.h"
#include "lib/scanner.h"
#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox {

namespace {

using Program = Tessik<QQ>;

std::string number(long value) {
  return std::to_string(value);
}

void readTargetProperties(std::istream& in, Program& p) {
  in >> p.dt;
  skipSpaceAndComments(in);
  if (nextCharacter(in) != '=') {
    p.kt = p.dt;
    return;
  }
  takeCharacter(in);
  in >> p.kt;
  if (p.kt.MN != p.dt.MN)
    fail("The dimensions of the target properties (kt, dt) differ (" + number(p.kt.MN) + ", " +
         number(p.dt.MN) + ")");
}

void checkRowCount(const char* matrix, long rows, const char* vector, long dimension) {
  if (rows != dimension)
    fail("The row count of " + std::string(matrix) + " (" + number(rows) +
         ") differs with the dimension of " + vector + " (" + number(dimension) + ")");
}

void readRows(std::istream& in, Program& p) {
  in >> p.At;
  checkRowCount("At", p.At.M, "dt", p.dt.MN);
  in >> p.Ag >> p.bg;
  checkRowCount("Ag", p.Ag.M, "bg", p.bg.MN);
  in >> p.Au;
}

// The number of variables, from the first kind of rows that tells it.
long variableCount(const Program& p) {
  const long n = p.At.M > 0 ? p.At.N : (p.Au.M == 0 ? p.Ag.N : p.Au.N);
  if (n == 0) fail("Dimension error -- n == 0");
  return n;
}

void checkColumnCount(const char* name, const Matrix<QQ>& matrix, long n) {
  if (matrix.N > 0 && matrix.N != n)
    fail("The column count of " + std::string(name) + " (" + number(matrix.N) +
         ") is not right ( != " + number(n) + " )");
}

// A row that is shorter than its matrix passed the matrix reader; here its missing element is out of range.
void checkFiniteRow(const Vector<QQ>& row, long columns, const char* message) {
  for (long j = 1; j <= columns; ++j)
    if (isInfinite(row[j])) fail(message);
}

void checkFiniteRows(const Program& p) {
  for (long i = 1; i <= p.At.M; ++i) checkFiniteRow(p.At[i], p.At.N, "+-inf not allowed in At");
  for (long i = 1; i <= p.Ag.M; ++i) {
    if (isInfinite(p.bg[i])) fail("+-inf not allowed in bg");
    checkFiniteRow(p.Ag[i], p.Ag.N, "+-inf not allowed in Ag");
  }
  for (long i = 1; i <= p.Au.M; ++i) checkFiniteRow(p.Au[i], p.Au.N, "+-inf not allowed in Au");
}

void readInequationBounds(std::istream& in, Program& p) {
  in >> p.lu;
  if (p.lu.MN != p.Au.M)
    fail("The row count of Au ( " + number(p.Au.M) + ") differs with the dimension of lu / ru ( " +
         number(p.lu.MN) + ")");
  in >> p.ru;
  if (p.lu.MN != p.ru.MN)
    fail("The dimensions of lu (" + number(p.lu.MN) + ") and ru (" + number(p.ru.MN) + ") differ");
  for (long i = 1; i <= p.lu.MN; ++i) {
    if (p.lu[i] > p.ru[i]) fail("ru has to be >= lu in each of its components");
    if (isMinusInfinity(p.lu[i]) && isPlusInfinity(p.ru[i]))
      fail("Useless inequation -inf <= ... <= inf found");
  }
}

void readVariables(std::istream& in, Program& p, long n) {
  in >> p.dx >> p.lx >> p.rx;
  if (n > p.rx.MN) fail("recheck sdim case and the usage of n (eg. in opt2lat)");
  // The wording notwithstanding, the two messages together demand as many bounds as variables.
  if (p.rx.MN == 0 || n < p.rx.MN) fail("The dimension of rx has to be > 0 and < A_{t,u,g}.MN");
  if (p.lx.MN != p.rx.MN || p.dx.MN != p.rx.MN)
    fail("The dimensions of the solution properties (lx, rx, dx) differ (" + number(p.lx.MN) + ", " +
         number(p.rx.MN) + ", " + number(p.dx.MN) + ")");
  // lx = rx = inf (or -inf) is in order by comparison and still leaves the variable no value.
  for (long i = 1; i <= n; ++i)
    if (p.rx[i] < p.lx[i] || isPlusInfinity(p.lx[i]) || isMinusInfinity(p.rx[i]))
      fail("rx has to be >= lx in each of its components");
}

void deriveProperties(Program& p) {
  p.fx.resize(p.rx.MN, false);
  for (long i = 1; i <= p.rx.MN; ++i) p.fx[i] = Program::freedomOf(p.lx[i], p.rx[i]);
  p.prepared = false;
  p.allTargetsFinite = true;
  for (long i = 1; i <= p.dt.MN && p.allTargetsFinite; ++i) p.allTargetsFinite = !isInfinite(p.dt[i]);
}

}  // namespace

template <>
void Tessik<QQ>::readOpt() {
  // Streamed and not read whole: a file that fails early costs no more memory than what was looked at.
  std::vector<char> buffer(1 << 20);
  std::ifstream in;
  in.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  if (canOpen(optFile)) in.open(optFile, std::ios::binary);
  if (!in.is_open()) fail("Could not read opt file: " + optFile);
  reset(true);
  readTargetProperties(in, *this);
  readRows(in, *this);
  const long n = variableCount(*this);
  checkColumnCount("At", At, n);
  checkColumnCount("Ag", Ag, n);
  checkColumnCount("Au", Au, n);
  checkFiniteRows(*this);
  readInequationBounds(in, *this);
  readVariables(in, *this, n);
  deriveProperties(*this);
}

}  // namespace latbox
