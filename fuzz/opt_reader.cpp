// The .opt reader: refuses or gives a program whose parts fit together, and what it gives survives being
// written and read again.
#include <sstream>

#include "model/tessik.h"
#include "numbers/number.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

void requireShape(const Matrix<QQ>& rows, long n) {
  require(rows.M == 0 || rows.N == n, "column count");
  for (long i = 1; i <= rows.M; ++i) {
    require(rows[i].MN == n, "length of a row");
    for (long j = 1; j <= n; ++j) require(!isInfinite(rows[i][j]), "finite rows");
  }
}

void requireSound(const Tessik<QQ>& p) {
  const long n = p.n();
  require(n > 0 && p.lx.MN == n && p.dx.MN == n && p.fx.MN == n, "dimensions of the variables");
  require(p.At.M == p.dt.MN && p.kt.MN == p.dt.MN, "dimensions of the targets");
  require(p.Ag.M == p.bg.MN, "dimensions of the equations");
  require(p.Au.M == p.lu.MN && p.Au.M == p.ru.MN, "dimensions of the inequations");
  requireShape(p.At, n);
  requireShape(p.Ag, n);
  requireShape(p.Au, n);
  for (long i = 1; i <= p.bg.MN; ++i) require(!isInfinite(p.bg[i]), "finite right-hand sides");
  for (long i = 1; i <= n; ++i) require(p.lx[i] <= p.rx[i], "order of the bounds");
  for (long i = 1; i <= p.lu.MN; ++i) require(p.lu[i] <= p.ru[i], "order of the sides");
}

std::string written(const Tessik<QQ>& p) {
  std::ostringstream out;
  out << p.dt << " = " << p.kt << '\n' << p.At << '\n' << p.Ag << '\n' << p.bg << '\n' << p.Au << '\n';
  out << p.lu << '\n' << p.ru << '\n' << p.dx << '\n' << p.lx << '\n' << p.rx << '\n';
  return out.str();
}

bool read(Tessik<QQ>& program, const std::string& text) {
  static MemoryFile file;
  file.set(text);
  program.optFile = file.path();
  return accepted([&program] { program.readOpt(); });
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox;
  using namespace latbox::fuzzing;
  Tessik<QQ> program;
  if (!read(program, textOf(bytes, size))) return 0;
  requireSound(program);
  const std::string text = written(program);
  Tessik<QQ> again;
  require(read(again, text), "the written program is read");
  require(written(again) == text, "the written program is the same");
  return 0;
}
