// The simplex method for rows w = A z, where columns and rows have bounds on either side, or none.
//
// Idea: a dictionary tells each basic variable as a combination of the nonbasic ones, which stay at one of
// their bounds; bounds need no rows of their own. A variable is raised or lowered until nothing raises it any
// more. That is all there is: the first phase brings one variable after the other within its bounds, those
// that are outside not being held to what they break. Cost: rows x columns operations a step.
//
// Source: the bounded dictionary is Chvatal's (Linear Programming, 1983, chapters 2, 3 and 8); Bland's rule
// (New finite pivoting rules for the simplex method, 1977) takes over where steps have no length, so that
// nothing cycles.
#pragma once

#include <optional>
#include <vector>

#include "complete/program/number.h"

namespace latbox::complete {

template <class R>
struct Bounds {
  std::optional<R> low;
  std::optional<R> high;
};

// Variables are numbered: the columns, then the rows. With R = Rational all is exact, and it ends. With R =
// double whatever it says is a guess that somebody else has to prove.
template <class R>
class Simplex {
 public:
  enum class End { OPTIMAL, UNBOUNDED, INFEASIBLE, GIVEN_UP };

  // Bounds of all variables, low <= high. Gives up after about `effort` operations; 0: never.
  Simplex(std::vector<std::vector<R>> rows, std::vector<Bounds<R>> bounds, unsigned long effort = 0);

  // OPTIMAL: a point keeps all bounds. INFEASIBLE: none does; what was asked for last cannot be had.
  End makeFeasible();
  // Raises sign * variable as far as it goes. Requires that makeFeasible said OPTIMAL.
  End maximise(std::size_t variable, int sign);

  // The last question: sign * variable was to be raised.
  std::size_t variable() const { return asked_; }
  int sign() const { return sign_; }
  // At the current point.
  const R& value(std::size_t variable) const { return values_[variable]; }
  // The y that prove the answer to the last question, OPTIMAL or INFEASIBLE: in sign * variable = sum y_i w_i
  // + sum r_j z_j every term is as great as its bounds allow.
  std::vector<R> multipliers() const;
  unsigned long work() const { return work_; }

 private:
  struct Move {
    std::size_t column;
    int direction;
  };
  // What ends a move: a basic variable at its bound, or without a row the bound of what moves.
  struct Block {
    R step{};
    std::optional<std::size_t> row;
    const R* end = nullptr;
  };

  bool isNonbasic(std::size_t variable) const { return places_[variable] >= dictionary_.size(); }
  std::size_t columnOf(std::size_t variable) const { return places_[variable] - dictionary_.size(); }
  std::optional<int> wrongSide(std::size_t variable) const;
  std::optional<std::size_t> firstWrong() const;
  void holdBounds();
  End push(std::size_t variable, int sign);
  std::optional<Move> entering(bool byNumber) const;
  bool canMove(std::size_t variable, int direction) const;
  Block firstBlock(const Move& move, bool byNumber) const;
  bool isEarlier(const Block& candidate, const R& rate, const Block& best, const R& bestRate,
                 bool byNumber) const;
  void carryOut(const Move& move, const Block& block);
  void pivot(std::size_t row, std::size_t column);

  // Entry [i][c]: how much nonbasic_[c] counts in basic_[i].
  std::vector<std::vector<R>> dictionary_;
  std::vector<Bounds<R>> bounds_;
  std::vector<R> values_;
  std::vector<std::size_t> basic_;
  std::vector<std::size_t> nonbasic_;
  // Of each variable its row, or its column behind all rows.
  std::vector<std::size_t> places_;
  // The bounds that count during one push.
  std::vector<const R*> low_;
  std::vector<const R*> high_;
  std::size_t asked_ = 0;
  int sign_ = 1;
  unsigned long effort_;
  unsigned long work_ = 0;
};

}  // namespace latbox::complete
