// Programs for tests, fuzzers and benchmarks, from the text of a .opt file, in either number type. Needs no
// test library.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <type_traits>

#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox::testing {

// 1 <= x1 + x2 <= 3 with x1, x2 in 0..4.
inline constexpr const char* SMALL = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

// The same with the target x1 - x2, to be minimised.
inline constexpr const char* SMALL_TARGET =
    "[ -inf ] [ [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

// A file that goes away with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text, const std::string& name = "program.opt")
      : path_(std::filesystem::temp_directory_path() /
              (std::to_string(getpid()) + "_" + std::to_string(count()++) + "_" + name)) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TemporaryFile() { unlink(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  static int& count() {
    static int number = 0;
    return number;
  }
  std::string path_;
};

inline Tessik<QQ> readProgramFile(const std::string& path) {
  Tessik<QQ> program;
  program.optFile = path;
  program.readOpt();
  return program;
}

inline Tessik<QQ> readProgram(const std::string& text) {
  return readProgramFile(TemporaryFile(text).path());
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
