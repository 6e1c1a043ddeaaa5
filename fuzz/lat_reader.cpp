// The .lat reader in both number types on four small programs: the first byte chooses the program. A lattice
// that was accepted must have the shape that the rest of the solver rests on, and survive being written and
// read again; its vectors go through the check of candidates.
#include "program/lat_file.h"
#include "small_lattices.h"

namespace latbox::fuzzing {
namespace {

template <class T>
using L = Lattice<T, dbl_t>;

template <class T>
LatticePointer<T> readLattice(std::size_t which, const std::string& path) {
  auto lattice = freshLattice<T, false>(which);
  lattice->latFile = path;
  if (!accepted([&] { readLatFile(*lattice); })) return nullptr;
  return lattice;
}

template <class T>
void requireSound(const L<T>& l) {
  require(l.rank == l.B.M && l.dim == l.B.N && l.rank > 0, "size of the basis");
  for (long i = 1; i <= l.rank; ++i) require(l.B[i].MN == l.dim, "length of a row");
  require(l.lbnd.MN == l.dim && l.ubnd.MN == l.dim && l.c.MN == l.dim, "check vectors");
  require(l.dim == (l.tu ? 1 : 0) + l.Au.M + l.n() + 1, "coordinates and variables");
  require(l.checkMode == CHECK_MODE_FINAL, "check mode");
}

// The way of every vector that reduction touches, and of the rows of a basis at the start of a run.
template <class T>
void checkRows(L<T>& l) {
  for (long i = 1; i <= l.rank; ++i) accepted([&] { l.checkSolution(Vector<T>(l.B[i]), NOW, false); });
}

template <class T>
void readWriteRead(std::size_t which, const std::string& text) {
  static MemoryFile input;
  static MemoryFile output;
  const Output silenced;
  input.set(text);
  const auto lattice = readLattice<T>(which, input.path());
  if (!lattice) return;
  requireSound(*lattice);
  lattice->latFile = output.path();
  lattice->writeEnabled = true;
  lattice->writeLatFile();
  lattice->writeEnabled = false;
  const auto again = readLattice<T>(which, output.path());
  require(again != nullptr, "the written lattice is read");
  requireSound(*again);
  if constexpr (std::is_same_v<T, QQ>) require(again->B_save == lattice->B_save, "the basis");
  checkRows(*lattice);
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox::fuzzing;
  if (size == 0) return 0;
  const std::size_t which = bytes[0] % PROGRAMS.size();
  const std::string text = textOf(bytes + 1, size - 1);
  readWriteRead<latbox::QQ>(which, text);
  readWriteRead<latbox::dbl_t>(which, text);
  return 0;
}
