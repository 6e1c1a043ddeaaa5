// What the tests of programs share.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "lib/exceptions.h"
#include "numbers/number.h"
#include "support/program_text.h"

namespace latbox::testing {

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
