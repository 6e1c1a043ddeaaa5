// What an object writes of itself.
#pragma once

#include <sstream>
#include <string>

namespace latbox::testing {

template <class V>
std::string textOf(const V& object) {
  std::ostringstream out;
  out << object;
  return out.str();
}

}  // namespace latbox::testing
