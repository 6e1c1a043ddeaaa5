// A line of one of the house's own files, word by word.
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace latbox::complete {

class BadWords : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Whatever is missing, or is none of what is asked for, throws BadWords.
class Words {
 public:
  explicit Words(const std::string& line) : in_(line) {}

  template <class T>
  T next() {
    T value{};
    // A stream would take -1 for the largest there is.
    const bool isNegative = (in_ >> std::ws).peek() == '-';
    if ((std::is_unsigned_v<T> && isNegative) || !(in_ >> value))
      throw BadWords("a value is missing or none");
    return value;
  }

  template <class T>
  std::vector<T> all() {
    std::vector<T> values;
    while (!isAtEnd()) values.push_back(next<T>());
    return values;
  }

  bool isAtEnd() { return (in_ >> std::ws).eof(); }

  // What is left of the line, without the blanks before it.
  std::string rest() {
    std::string text;
    std::getline(in_ >> std::ws, text);
    return text;
  }

 private:
  std::istringstream in_;
};

}  // namespace latbox::complete
