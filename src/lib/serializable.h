// The interface of text forms.
#pragma once

#include <istream>
#include <ostream>
#include <string>

namespace latbox {

class Serializable {
 public:
  std::string delimiters;  // what ends an element of a delimiter-separated list; holds a blank at least
  bool skipAll;            // readers skip delimiters as a run, and comments with them
  bool extra;              // travels with the object; decides nothing

  explicit Serializable(std::string separators = " ", bool skipRuns = true, bool extraFlag = false)
      : delimiters(std::move(separators)), skipAll(skipRuns), extra(extraFlag) {
    if (delimiters.find(' ') == std::string::npos) delimiters += ' ';
  }
  Serializable(const Serializable&) = default;
  Serializable(Serializable&&) = default;
  Serializable& operator=(const Serializable&) = default;
  Serializable& operator=(Serializable&&) = default;
  virtual ~Serializable() = default;

  virtual void write(std::ostream& out) const = 0;
  virtual void read(std::istream& in) = 0;
};

inline std::ostream& operator<<(std::ostream& out, const Serializable& object) {
  object.write(out);
  return out;
}

inline std::istream& operator>>(std::istream& in, Serializable& object) {
  object.read(in);
  return in;
}

}  // namespace latbox
