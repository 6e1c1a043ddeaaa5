// The ranges of the variables at a node of a search, and what rows say of them: bounds by activities, in
// machine words, until nothing moves. What is narrowed is remembered, so that a search goes back by a mark.
//
// Cost: the terms of each row that a narrowed variable is in; wide ranges may creep, and after the work of
// some visits of each row they stay as they are.
#pragma once

#include "complete/linear/word_program.h"

namespace latbox::complete {

class Domains {
 public:
  // The program outlives this.
  explicit Domains(const WordProgram& program);

  const std::vector<WordRange>& box() const { return box_; }

  using Mark = std::size_t;
  Mark mark() const { return trail_.size(); }
  void goBack(Mark mark);

  // Requires a part of the variable's range.
  void narrow(std::size_t variable, const WordRange& range);
  // What the rows say of what was narrowed. False: no point is left, by proof, and until goBack() all else
  // here means nothing.
  bool propagate();

  // Terms that were looked at, and rows that were to be looked at.
  unsigned long work() const { return work_; }

 private:
  struct Past {
    std::size_t variable;
    WordRange range;
  };

  void touch(std::size_t row);
  bool look(const WordRow& row);
  bool narrowTerm(const WordRow::Term& term, const WordRange& sides, const WordRange& activity);

  const WordProgram& program_;
  std::vector<WordRange> box_;
  std::vector<std::vector<std::size_t>> rowsOf_;
  std::vector<Past> trail_;
  // Rows to be looked at, each once, in a ring.
  std::vector<std::size_t> open_;
  std::size_t first_ = 0;
  std::size_t openCount_ = 0;
  std::vector<char> isOpen_;
  unsigned long work_ = 0;
  // Of one propagate().
  unsigned long mostWork_ = 0;
};

}  // namespace latbox::complete
