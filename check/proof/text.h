// A proof as its file states it: the grammar of docs/proof.md, and nothing of what it means.
#pragma once

#include <gmpxx.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace latbox::check::proof {

// A proof that follows the grammar and does not prove; what() begins with the place, "line 12: ". Numbers may
// have any length, so a long reason breaks off.
class Refused : public std::runtime_error {
 public:
  Refused(std::size_t line, const std::string& reason)
      : std::runtime_error("line " + std::to_string(line) + ": " + reason.substr(0, SHOWN) +
                           (reason.size() > SHOWN ? "..." : "")) {}
  static constexpr std::size_t SHOWN = 300;
};

using Integers = std::vector<mpz_class>;

// The numbers of a line, and the number of that line.
struct Numbers {
  std::size_t line = 0;
  Integers values;
};

enum class Kind { NONE, ALL, OPTIMUM };
enum class Goal { POINTS, BETTER, SLACK, EQUAL };
enum class Objective { NORM, DISTANCE, LINEAR };
enum class Rule { UPPER, LOWER, CLASS };

// "points" and so on.
const char* nameOf(Goal goal);

struct Verdict {
  std::size_t line = 0;
  Kind kind = Kind::NONE;
  // T and S.
  mpq_class target;
  mpq_class slack;
  // N of `all N` and of `optimum T S N`.
  std::optional<mpz_class> count;
};

struct ObjectiveRow {
  Objective kind = Objective::LINEAR;
  Numbers signs;
};

struct Step {
  std::size_t line = 0;
  Rule rule = Rule::UPPER;
  // 'x' or 'r' with a number from 1, or '0'.
  char form = '0';
  mpz_class number;
  mpz_class divisor;
  // Of a class only.
  mpz_class modulus;
  // Their rows, and the numbers behind these.
  Integers rows;
  Integers factors;
};

struct Level {
  mpz_class number;
  mpz_class divisor;
  Numbers main;
  std::vector<Numbers> sides;
};

struct Search {
  std::size_t line = 0;
  Goal goal = Goal::POINTS;
  std::vector<ObjectiveRow> objective;
  std::vector<Step> steps;
  // Where it ends: the line "contradiction", with 0 nodes and points and nothing else, or "walk".
  std::size_t endLine = 0;
  bool contradiction = false;
  // Rank, equations and coordinate rows, as announced, and the numbers of these rows.
  Numbers lattice;
  Numbers equations;
  Numbers coordinates;
  Numbers point;
  std::vector<Numbers> basis;
  std::vector<Numbers> dual;
  Numbers constant;
  // As many as the basis has vectors; that of number 0 stands first here, and last in the file.
  std::vector<Level> levels;
  mpz_class nodes;
  mpz_class points;
};

struct Proof {
  Verdict verdict;
  // With an optimum only.
  std::size_t pointLine = 0;
  std::vector<mpq_class> point;
  std::vector<Search> searches;
};

// Reads a proof. The kind of each word and the number of lines are grammar; how many numbers stand in a line,
// and which, is not. Memory grows with what is read, and not with the sizes that the file announces.
// Throws: check::Unreadable, "12: reason" with the line's number.
Proof readProof(std::string_view text);

}  // namespace latbox::check::proof
