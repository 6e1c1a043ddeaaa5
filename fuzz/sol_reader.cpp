// The .sol reader and the check of each star, in both number types, on four small programs: the first byte
// chooses the program. What was admitted must be written and read back the same.
#include "program/sol_file.h"
#include "small_lattices.h"

namespace latbox::fuzzing {
namespace {

template <class T>
using L = Lattice<T, dbl_t>;

// What the file leaves behind, or nothing if it was refused.
template <class T>
LatticePointer<T> latticeWithStars(std::size_t which, const std::string& path) {
  auto lattice = freshLattice<T, true>(which);
  lattice->solFile = path;
  if (!accepted([&] { readStarsFromSolFile(*lattice, false, false); })) return nullptr;
  return lattice;
}

// Standard precision writes 17 digits of its 19, so that only the number of stars must be the same there.
template <class T>
void requireSame(const L<T>& a, const L<T>& b) {
  require(a.program.stars.MN == b.program.stars.MN, "the number of stars");
  if constexpr (std::is_same_v<T, QQ>) require(starReport(a) == starReport(b), "the stars");
}

template <class T>
void readWriteRead(std::size_t which, const std::string& text) {
  static MemoryFile input;
  static MemoryFile output;
  const Output silenced;
  input.set(text);
  const auto lattice = latticeWithStars<T>(which, input.path());
  if (!lattice || lattice->program.stars.MN == 0) return;
  lattice->solFile = output.path();
  lattice->writeEnabled = true;
  writeSolFile(*lattice, true);
  const auto again = latticeWithStars<T>(which, output.path());
  require(again != nullptr, "the written stars are read");
  requireSame(*lattice, *again);
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
