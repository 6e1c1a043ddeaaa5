// A proof as its file states it: the grammar of docs/proof.md, and nothing of what it means.
#pragma once

#include <gmpxx.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace latbox::check::proof {

using Integers = std::vector<mpz_class>;

// A proof that follows the grammar and does not prove; what() begins with the place, "line 12: ".
class Refused : public std::runtime_error {
 public:
  Refused(std::size_t line, const std::string& reason)
      : std::runtime_error("line " + std::to_string(line) + ": " + reason) {}
};

// A vector, and the number of its line.
struct Numbers {
  std::size_t line = 0;
  Integers values;
};

enum class Kind { NONE, ALL, OPTIMUM };

struct Verdict {
  std::size_t line = 0;
  Kind kind = Kind::NONE;
  // N of `all N` and of `optimum T S N`.
  std::optional<mpz_class> count;
  mpq_class targetNorm;
  mpq_class slackNorm;
};

enum class Goal { POINTS, BETTER, SLACK, EQUAL };
const char* nameOf(Goal goal);

enum class Objective { NORM, DISTANCE, LINEAR };

struct ObjectiveRow {
  std::size_t line = 0;
  Objective kind = Objective::LINEAR;
  Integers signs;
};

// Numbers of variables, rows and levels are cut off at this one, which none of them is.
inline constexpr std::size_t NO_SUCH = static_cast<std::size_t>(-1);

struct Term {
  std::size_t row = 0;
  mpz_class factor;
};

enum class Rule { UPPER, LOWER, CLASS };

struct Step {
  std::size_t line = 0;
  Rule rule = Rule::UPPER;
  // 'x' or 'r' with a number from 1, or '0'.
  char form = '0';
  std::size_t number = 0;
  mpz_class divisor;
  // Of a class only.
  mpz_class modulus;
  std::vector<Term> terms;
};

struct Level {
  std::size_t line = 0;
  std::size_t number = 0;
  mpz_class divisor;
  Integers main;
  std::vector<Numbers> sides;
};

// Numbers of rows, and how many were announced.
struct Rows {
  std::size_t line = 0;
  std::size_t announced = 0;
  std::vector<std::size_t> numbers;
};

struct Lattice {
  std::size_t line = 0;
  Rows equations;
  Rows coordinates;
  Numbers point;
  std::vector<Numbers> basis;
  std::vector<Numbers> dual;
};

struct Search {
  std::size_t line = 0;
  Goal goal = Goal::POINTS;
  std::vector<ObjectiveRow> objective;
  std::vector<Step> steps;
  // Where it ends: the line "contradiction" or "walk".
  std::size_t endLine = 0;
  bool contradiction = false;
  // What follows is empty for a contradiction.
  Lattice lattice;
  Numbers constant;
  // In the order of their numbers, the last one of the file first.
  std::vector<Level> levels;
  mpz_class nodes;
  mpz_class points;
};

struct Proof {
  Verdict verdict;
  // Given if and only if the verdict is an optimum.
  std::size_t pointLine = 0;
  std::vector<mpq_class> point;
  std::vector<Search> searches;
};

// Reads a proof. The kind of each word and the number of lines are grammar; how many numbers stand in a line,
// and which, is not. Memory grows with what is read, and not with the sizes that the file announces.
// Throws: check::Unreadable, "12: reason" with the line's number.
Proof readProof(std::string_view text);

}  // namespace latbox::check::proof
