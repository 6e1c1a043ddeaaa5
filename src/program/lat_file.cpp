#include "program/lat_file.h"

#include <sstream>
#include <tuple>

#include "lib/exceptions.h"
#include "lib/os/clock.h"
#include "lib/os/file.h"
#include "lib/progress.h"
#include "lib/scanner.h"
#include "numbers/number.h"
#include "params/statistics.h"
#include "program/file_items.h"
#include "program/generation.h"
#include "program/widths.h"

namespace latbox {
namespace {

// Names more than the file holds, and is never read. It stays as it is: the text of a file is an interface,
// and the same lattice gives the same bytes as ever.
constexpr const char* CLOSING_COMMENT = "\n// B -- l, r -- c, R -- lx, rx, fx -- tu, At, dt, lrtu\n";

// A row operation in standard precision may leave a negative zero.
template <class T>
Matrix<T> withPlainZeros(Matrix<T> M) {
  for (long i = 1; i <= M.M; ++i)
    for (long j = 1; j <= M.N; ++j)
      if (isExactZero(M[i][j])) M[i][j] = T(0);
  return M;
}

// Items 1 to 9 of the format.
template <class T, class F>
std::string latText(const Lattice<T, F>& l) {
  std::ostringstream out;
  throwOnBadStream(out);
  setFullPrecision(out);
  out << withPlainZeros(l.unscaled(l.B)) << "\n\n";
  out << l.lbnd << '\n' << l.ubnd << "\n\n";
  out << l.c << '\n' << l.R << "\n\n";
  out << l.generatedLx << '\n' << l.generatedRx << "\n\n";
  out << (l.generatedTu ? 1 : 0) << '\n' << l.generatedLrtu << "\n\n";
  out << now() - statisticsOf<T>().startTime.get() << '\n';
  return out.str();
}

// What the file holds, complete before the lattice hears of it.
template <class T>
struct SavedLattice {
  Matrix<T> basis;
  Vector<T> lbnd, ubnd, c, lx, rx;
  T R;
  bool tu = false;
  SerializablePair<T, T> lrtu;
  long seconds = 0;
};

template <class T>
void requireFinite(const Vector<T>& v) {
  for (long i = 1; i <= v.MN; ++i)
    if (isInfinite(v[i])) fail("Vector: bad input");
}

template <class T>
void checkVectorPrecision(const Vector<T>& v, const char* message) {
  for (long i = 1; i <= v.MN; ++i) checkPrecision(v[i], message);
}

template <class T>
void readBasis(std::istream& in, Matrix<T>& basis, long targets) {
  basis.read(in);
  if (!basis.notEmpty()) fail("Matrix: bad input");
  for (long i = 1; i <= basis.M; ++i) {
    if (basis[i].MN != basis.N) fail("Matrix row dimension mismatch");
    requireFinite(basis[i]);
    checkVectorPrecision(basis[i], "B_save overflow");
  }
  if (targets > basis.N) fail("target dimension > lattice dimension");
}

template <class T>
void readCheckVectors(std::istream& in, SavedLattice<T>& saved) {
  saved.lbnd.read(in);
  saved.ubnd.read(in);
  if (saved.lbnd.MN != saved.basis.N || saved.ubnd.MN != saved.basis.N)
    fail("check vector dimensions are incorrect");
  checkVectorPrecision(saved.lbnd, "lbnd overflow");
  checkVectorPrecision(saved.ubnd, "ubnd overflow");
}

// The multipliers divide and the range scales: zero or infinite ones are a damaged file.
template <class T>
void readScale(std::istream& in, SavedLattice<T>& saved) {
  saved.c.read(in);
  if (saved.c.MN != saved.basis.N) fail("c vector dimension mismatch");
  requireFinite(saved.c);
  for (long i = 1; i <= saved.c.MN; ++i)
    if (isExactZero(saved.c[i])) fail("Vector: bad input");
  checkVectorPrecision(saved.c, "c overflow");
  saved.R = takeNumber<T>(in);
  if (isInfinite(saved.R) || saved.R <= T(0)) fail("Vector: bad input");
  requireTextual(saved.basis, saved.R);
}

template <class T>
void readProgramBounds(std::istream& in, SavedLattice<T>& saved) {
  saved.lx.read(in);
  saved.rx.read(in);
  requireExact(saved.lx);
  requireExact(saved.rx);
  const long tu = takeInteger(in);
  if (tu != 0 && tu != 1) fail("Vector: bad input");
  saved.tu = tu == 1;
  saved.lrtu.read(in);
  if (in.fail()) fail("Vector: bad input");
  precisionCheck(saved.lrtu.left);
  precisionCheck(saved.lrtu.right);
  const auto& [ltu, rtu] = std::tie(saved.lrtu.left, saved.lrtu.right);
  if (saved.tu && (isInfinite(ltu) || isInfinite(rtu) || ltu > rtu)) fail("Vector: bad input");
}

template <class T>
SavedLattice<T> parseLatText(const std::string& text, long targets) {
  SavedLattice<T> saved;
  std::istringstream in(text);
  throwOnBadStream(in);
  acceptExponents(in);
  readBasis(in, saved.basis, targets);
  readCheckVectors(in, saved);
  readScale(in, saved);
  readProgramBounds(in, saved);
  saved.seconds = takeInteger(in);
  return saved;
}

// Stage one makes slack and deviation variables of its own, so it runs before the bounds of the file, which
// include theirs, are put in.
template <class T, class F>
void prepareWith(Lattice<T, F>& l, const SavedLattice<T>& saved) {
  Tessik<T>& program = l.program;
  if (!program.prepared) program.prepareStageOne(false, l.verb() == 2);
  if (saved.lx.MN != program.n() || saved.rx.MN != program.n())
    fail("The dimensions of the solution properties (lx, rx, dx) differ (" + std::to_string(saved.lx.MN) +
         ", " + std::to_string(saved.rx.MN) + ", " + std::to_string(program.dx.MN) + ")");
  // A target coordinate of a program without targets.
  if (saved.tu && program.At.M == 0) fail("check vector dimensions are incorrect");
  l.generatedLx = program.lx = saved.lx;
  l.generatedRx = program.rx = saved.rx;
  program.tu = saved.tu;
  l.generatedLrtu = program.lrtu = saved.lrtu;
  prepare(l, false, true);
  l.generatedTu = l.tu;
  // A basis of another program would send the maps between the two out of range.
  if (l.dim != (l.tu ? 1 : 0) + l.Au.M + l.n() + 1) fail("check vector dimensions are incorrect");
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::writeLatFile() {
  if (!this->writeEnabled) return;
  if (latFile.empty()) {
    warn("latFile is not set - lattice write not possible");
    return;
  }
  writeOutput(latFile, latText(*this) + CLOSING_COMMENT);
}

template <class T, class F>
void readLatFile(Lattice<T, F>& l) {
  const ProgressScope level(l.verb() == 2, "Reading lat file ...");
  std::string text;
  if (!readFile(l.latFile, text)) fail("The lattice file [ " + l.latFile + " ] can't be opened!");
  const SavedLattice<T> saved = parseLatText<T>(text, l.program.dt.MN);
  l.resizeLattice(saved.basis.M, saved.basis.N);
  l.lbnd = saved.lbnd;
  l.ubnd = saved.ubnd;
  l.takeBounds(CHECK_MODE_FINAL);
  l.c = saved.c;
  l.R = saved.R;
  l.savedSeconds = saved.seconds;
  prepareWith(l, saved);
  lcmOfWidths(l, l.R, false);
  if (l.tu) adjustWidth(l.R, l.rtu(), l.ltu());
  l.printProgram(l.verb() == 2);
  l.enterBasis(saved.basis);
  l.restoreMultipliers();
}

template void Lattice<dbl_t, dbl_t>::writeLatFile();
template void Lattice<QQ, dbl_t>::writeLatFile();
LATBOX_BOTH_TYPES(readLatFile)

}  // namespace latbox
