// A program in machine words, rows by the coefficients that are not 0, for searches that look at many boxes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "complete/program/integer_program.h"

namespace latbox::complete {

// low <= high, but for a range that is empty.
struct WordRange {
  std::int64_t low = 0;
  std::int64_t high = 0;

  bool isFixed() const { return low == high; }
  bool isEmpty() const { return low > high; }
  bool operator==(const WordRange&) const = default;
};

// low <= a z <= high; both sides are within what a z can be.
struct WordRow {
  struct Term {
    std::size_t variable;
    std::int64_t count;
  };
  std::vector<Term> terms;
  WordRange range;
};

struct WordProgram {
  std::vector<WordRange> box;
  std::vector<WordRow> rows;
};

// Rows and variables; ends of variables and coefficients; what a z can be in the box; multipliers. So no sum
// below leaves its type.
inline constexpr std::size_t MOST_COUNT = std::size_t(1) << 14;
inline constexpr std::int64_t MOST_SIZE = std::int64_t(1) << 30;
inline constexpr std::int64_t MOST_ACTIVITY = std::int64_t(1) << 60;
inline constexpr std::int64_t MOST_MULTIPLIER = std::int64_t(1) << 36;

// The same points. Nothing: it has more of them, longer ones, or a variable with an open end. A row that
// cannot be kept has an empty range.
std::optional<WordProgram> wordProgramOf(const IntegerProgram& program);

// What a z can be in a box.
WordRange activityOf(const WordRow& row, const std::vector<WordRange>& box);

// Makes rows with a single side say more about points that are not whole: where a variable at one of its ends
// makes a row idle, its coefficient shrinks until the row is just so. Keeps the whole points. (Savelsbergh,
// Preprocessing and probing techniques for mixed integer programming problems, 1994, for 0 and 1.)
void strengthen(WordProgram& program);

// Whether the sides of the rows bound the sum of all y_i (a_i z) below all that it is in the box: then the
// box has no point. Exact, for any y_i of at most MOST_MULTIPLIER in size.
bool isContradiction(const WordProgram& program, const std::vector<WordRange>& box,
                     const std::vector<std::int64_t>& y);

}  // namespace latbox::complete
