// The last word on a point: whether it keeps the program as it was read.
//
// Idea: millions of points are verified one by one, and rationals take some 100 microseconds for each. With
// every row multiplied by its common denominator all numbers are whole; where the bounds of the variables
// prove that no sum leaves a machine word, words say the same in one or two. Elsewhere GMP does it. The
// conditions are taken from the program itself: nothing that presolve or the search have made of it has a
// part in this.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete {

class Verification {
 public:
  // The program must outlive this.
  explicit Verification(const Program& program);

  // The point with these whole variables, one each. Throws std::logic_error if it is none of the program.
  Point pointOf(const IntegerVector& z) const;
  // The same, into the memory of another point.
  void takePoint(Point& x, const IntegerVector& z) const;

  // Words hold all that keeps() computes.
  bool isShort() const { return isShort_; }
  // Whether these whole variables, one each, are those of a point of the program. Requires isShort().
  bool keeps(const std::vector<long>& words) const;

 private:
  // Sums of products and sides are below this: two of them can be added.
  static constexpr long LIMIT = 1l << 62;

  struct Word {
    std::size_t variable;
    long coefficient;
  };
  struct Condition {
    std::vector<Word> words;
    long low;
    long high;
  };

  bool listShort();
  bool listRow(const std::vector<Rational>& row, const Number& low, const Number& high);
  bool keepsShort(const IntegerVector& z) const;

  const Program& program_;
  // Of the variables, and of the rows; nothing is listed where a number is too long.
  std::vector<std::pair<long, long>> box_;
  std::vector<Condition> conditions_;
  bool isShort_;
};

}  // namespace latbox::complete
