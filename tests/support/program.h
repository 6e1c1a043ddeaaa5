// Programs for tests, from the text of a .opt file, in either number type.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <type_traits>

#include "lib/exceptions.h"
#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox::testing {

// A file in the test's own folder that goes away with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text, const std::string& name = "program.opt")
      : path_(::testing::TempDir() + std::to_string(getpid()) + "_" + std::to_string(count()++) + "_" +
              name) {
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

inline Tessik<QQ> readProgram(const std::string& text) {
  const TemporaryFile file(text);
  Tessik<QQ> program;
  program.optFile = file.path();
  program.readOpt();
  return program;
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

// `step` throws PrecisionException with exactly this text.
template <class Step>
void expectPrecisionException(Step step, const std::string& text) {
  try {
    step();
    ADD_FAILURE() << "no exception, expected: " << text;
  } catch (const PrecisionException& e) {
    EXPECT_EQ(e.what(), text);
  }
}

// Rows or elements in one line, as "[ 1 2 ]" and "[ 1 2 ][ 3 4 ]".
template <class T>
std::string shown(const Vector<T>& v) {
  std::ostringstream out;
  out << setFullPrecision << v;
  return out.str();
}
template <class T>
std::string shown(const Matrix<T>& m) {
  std::string text;
  for (long i = 1; i <= m.M; ++i) text += shown(m[i]);
  return text;
}
template <class T>
std::string shown(const SerializablePair<T, T>& pair) {
  return toText(pair.left) + " .. " + toText(pair.right);
}
inline std::string shown(const SerializableArray<FreedomDegree>& fx) {
  std::string text;
  for (long i = 1; i <= fx.MN; ++i) text += std::to_string(static_cast<int>(fx[i]));
  return text;
}
template <class T>
std::string shown(const Map<long, T>& map) {
  std::string text;
  for (long i = 1; i <= map.MN; ++i) text += std::to_string(map[i].left) + ":" + toText(map[i].right) + " ";
  return text;
}

}  // namespace latbox::testing
