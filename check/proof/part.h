// What a part of a check tells, one line of text, and how all parts together make the whole.
//
//     latbox-check-part 1 K/N proof D program D GOAL NODES POINTS ... sum D
//
// with the goal and what was met for each search. The digests D are those of the proof, the program and the
// line before the word "sum". They show what was mixed up or broken, not what somebody has invented: who
// joins parts believes those who have computed them.
#pragma once

#include <cstdint>

#include "check/proof/walk.h"

namespace latbox::check::proof {

// 64 bits of FNV-1a, in 16 hexadecimal digits.
std::string digestOf(std::string_view text);

// The digests of what belongs together.
struct Origin {
  std::string proof;
  std::string program;
};

// Without a line end.
std::string partLine(const Origin& origin, const Plan& plan, const Proof& proof,
                     const std::vector<Counts>& met);

// The sum of all parts, which are the lines of a text.
// Throws: Unreadable, "3: reason", for what is no line of a part, or was damaged; Refused, with the number of
// the line, for a part of something else, one that stands there twice, and a missing one.
std::vector<Counts> joined(std::string_view text, const Origin& origin, const Proof& proof);

}  // namespace latbox::check::proof
