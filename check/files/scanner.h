// Tokens, vectors and matrices of the file formats, with the place of whatever is wrong.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "check/numbers/number.h"
#include "check/numbers/row.h"

namespace latbox::check {

// A file that cannot be read; what() begins with the place, "line 3, column 7: ".
class Unreadable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The same where the text ends and needs to go on.
class BrokenOff : public Unreadable {
 public:
  using Unreadable::Unreadable;
};

using Vector = std::vector<Number>;
// All rows have the same length, at least 1.
using Matrix = std::vector<Row>;

// Reads a text from its beginning to its end. Every taking call first skips blanks, tabs, line ends and
// comments ("//" up to the line's end, "/*" up to "*/"). All of them throw Unreadable.
class Scanner {
 public:
  // The text must outlive the scanner. `firstLine` is the number of its first line in the file. With
  // `exponents` numbers may have one.
  explicit Scanner(std::string_view text, long firstLine = 1, bool exponents = false)
      : text_(text), firstLine_(firstLine), exponents_(exponents) {}

  void skip() {
    // Called before every token, and mostly there is nothing to skip.
    if (at_ == text_.size() || text_[at_] <= ' ' || text_[at_] == '/') skipSlowly();
  }
  // Where the next token begins, for refuse().
  std::size_t position();
  bool atEnd();

  // Takes the character if it comes next.
  bool takeIf(char wanted);
  // Takes the character, which must come next; `purpose` says what for: "to begin bg".
  void take(char wanted, const std::string& purpose);
  // A number or an infinity ("inf", "-inf"), followed by a blank, a bracket, a bar or the end.
  Number takeNumber();
  // Digits, perhaps behind a minus, at most 18 of them.
  long takeInteger();
  // "[", numbers, "]".
  Vector takeVector(const std::string& name);
  // "[", rows as vectors, "]". Infinite elements and rows of different length are refused.
  Matrix takeMatrix(const std::string& name);

  // What is left, as it stands.
  std::string_view rest() const { return text_.substr(at_); }

  // Throws BrokenOff if the text has been taken to its end, else Unreadable.
  [[noreturn]] void refuse(std::size_t position, const std::string& message) const;

 private:
  void skipSlowly();
  bool skipComment();
  std::optional<long> takeWord();
  std::string_view takeToken();
  bool takeInfinity(std::string_view word);
  void requireEndOfNumber(std::size_t begin, bool slashBelongs);
  Row finiteRow(const Vector& row, std::size_t position, const std::string& name) const;
  // The next character, named for a message.
  std::string found();

  std::string_view text_;
  std::size_t at_ = 0;
  long firstLine_;
  bool exponents_;
};

}  // namespace latbox::check
