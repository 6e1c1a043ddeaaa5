// What is printed of a file of solutions: a line for each of them, and a verdict.
#pragma once

#include <ostream>
#include <string>

#include "check/judging/judge_file.h"

namespace latbox::check {

struct Report {
  std::size_t count = 0;
  std::size_t wrong = 0;
  // 0: none.
  long tornLine = 0;
};

// "1 of 2 solutions wrong".
std::string verdictOf(const Report& report);

// Called for each solution that nothing has been found wrong with; what it adds to the faults counts as they
// do.
using Objection = std::function<void(const Solution& solution, Judgement& judgement)>;

// Judges all solutions of the file, and prints each judgement unless `quiet`.
// Throws: Unreadable, without the file's name.
Report report(const Program& program, const std::string& path, bool quiet, std::ostream& out,
              const Objection& objection = nullptr);

}  // namespace latbox::check
