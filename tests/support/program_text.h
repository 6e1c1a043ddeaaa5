// Programs for tests, fuzzers and benchmarks, from the text of a .opt file, in either number type. Needs no
// test library.
#pragma once

#include <string>
#include <type_traits>

#include "model/tessik.h"
#include "numbers/number.h"
#include "support/memory_file.h"

namespace latbox::testing {

// 1 <= x1 + x2 <= 3 with x1, x2 in 0..4.
inline constexpr const char* SMALL = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

// The same with the target x1 - x2, to be minimised.
inline constexpr const char* SMALL_TARGET =
    "[ -inf ] [ [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

inline Tessik<QQ> readProgramFile(const std::string& path) {
  Tessik<QQ> program;
  program.optFile = path;
  program.readOpt();
  return program;
}

inline Tessik<QQ> readProgram(const std::string& text) {
  return readProgramFile(MemoryFile(text).path());
}

template <class T>
Tessik<T> programOf(const std::string& text) {
  Tessik<T> program;
  if constexpr (std::is_same_v<T, QQ>)
    program = readProgram(text);
  else
    program.convertFrom(readProgram(text));
  return program;
}

}  // namespace latbox::testing
