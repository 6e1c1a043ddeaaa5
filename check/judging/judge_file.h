// The judgement on all solutions of a file.
#pragma once

#include <functional>

#include "check/files/solution_file.h"
#include "check/judging/judge.h"

namespace latbox::check {

using Verdict = std::function<void(std::size_t number, const Solution& solution, const Judgement& judgement)>;

// Calls `tell` for each solution, numbered from 1 in the order of the file, with its judgement; a fault of
// its own is that it says the same as an earlier one. Nothing is told of a file that cannot be read to its
// end.
//
// The file is read twice, for what repeats it is known only at its end, and memory is kept for 16 bytes a
// solution; see repetitions.h.
// Throws: Unreadable, without the file's name; after something was told only if the file has changed
// meanwhile.
void judgeFile(const Program& program, SolutionFile& file, const Verdict& tell);

}  // namespace latbox::check
