// A small .opt file the whole way to its lattice, in both number types: reading, preparation, generation, the
// trivial solutions. What comes out must have the shape that reduction rests on, and every star must satisfy
// the program as it was read.
#include "lattice/lattice.h"
#include "numbers/number.h"
#include "program/generation.h"
#include "program/sol_file.h"
#include "program/trivial.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

// Reduction takes its time with what is larger, and no reader is to blame.
constexpr long MAX_VARIABLES = 8;
constexpr long MAX_ROWS = 6;
constexpr long MAX_DIGITS = 60;

bool isShort(const Vector<QQ>& v) {
  for (long i = 1; i <= v.MN; ++i)
    if (v[i].ganze.digits() > MAX_DIGITS || v[i].nenner.digits() > MAX_DIGITS) return false;
  return true;
}

bool isSmall(const Tessik<QQ>& p) {
  bool small = p.n() <= MAX_VARIABLES && p.At.M + p.Ag.M + p.Au.M <= MAX_ROWS;
  for (const auto* rows : {&p.At, &p.Ag, &p.Au})
    for (long i = 1; i <= rows->M && small; ++i) small = isShort((*rows)[i]);
  for (const auto* v : {&p.dt, &p.kt, &p.bg, &p.lu, &p.ru, &p.lx, &p.rx}) small = small && isShort(*v);
  // A thousand digits more make a reduction of a minute.
  for (long i = 1; i <= p.dx.MN && small; ++i) small = p.dx[i] <= QQ(6) || p.dx[i] > QQ(10000);
  return small;
}

void requireSatisfied(const Tessik<QQ>& p, const Vector<QQ>& x) {
  require(x.MN == p.n(), "the length of a star");
  for (long i = 1; i <= p.Ag.M; ++i) require(p.Ag[i] * x == p.bg[i], "an equation of a star");
  for (long i = 1; i <= p.Au.M; ++i) {
    const QQ value = p.Au[i] * x;
    require(p.lu[i] <= value && value <= p.ru[i], "an inequation of a star");
  }
}

template <class T>
void requireSound(const Lattice<T, dbl_t>& l) {
  require(l.rank == l.B.M && l.dim == l.B.N, "size of the basis");
  require(l.lbnd.MN == l.dim && l.ubnd.MN == l.dim && l.c.MN == l.dim, "check vectors");
  require(l.dim == (l.tu ? 1 : 0) + l.Au.M + l.n() + 1, "coordinates and variables");
}

template <class T>
Tessik<T> inType(const Tessik<QQ>& p) {
  if constexpr (std::is_same_v<T, QQ>) {
    return p;
  } else {
    Tessik<T> converted;
    converted.convertFrom(p);
    return converted;
  }
}

template <class T>
void load(const Tessik<QQ>& asRead) {
  Lattice<T, dbl_t> lattice;
  lattice.params.sol.set(0);
  lattice.program = inType<T>(asRead);
  prepare(lattice, true, false);
  prepareLattice(lattice);
  requireSound(lattice);
  checkTrivialSolutions(lattice);
  sol2star(lattice);
  for (long i = 1; i <= lattice.program.stars.MN; ++i) {
    if constexpr (std::is_same_v<T, QQ>) requireSatisfied(asRead, lattice.program.stars[i]);
  }
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox;
  using namespace latbox::fuzzing;
  static MemoryFile file;
  const Output silenced;
  file.set(textOf(bytes, size));
  Tessik<QQ> program;
  program.optFile = file.path();
  if (!accepted([&program] { program.readOpt(); })) return 0;
  if (!isSmall(program)) return 0;
  accepted([&program] { load<QQ>(program); });
  accepted([&program] { load<dbl_t>(program); });
  return 0;
}
