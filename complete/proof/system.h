// The integer system of one search of a proof, exactly as docs/proof.md builds it: its rows stay as they are,
// and whatever is said about them is said in steps.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete::proof {

// Which feasible points a search of a proof counts.
enum class Goal { POINTS, BETTER, SLACK, EQUAL };

// A row that the norms of the points that count keep.
struct ObjectiveRow {
  enum class Kind { NORM, DISTANCE, LINEAR };
  Kind kind;
  // -1, 0 or 1 for each target with a wanted value; none for LINEAR.
  std::vector<int> signs;
};

struct System {
  // Of z.
  std::vector<Range> box;
  // Equations, inequations, objective rows.
  IntegerMatrix rows;
  std::vector<Range> ranges;
  std::vector<ObjectiveRow> objective;
};

// Objective rows are chosen here: all patterns of signs for few targets with a value, single ones beside.
// The norms mean nothing for the goal POINTS.
System systemOf(const Program& program, Goal goal, const Norms& norms);

// Whether the proof of an optimum has a search SLACK. Targets that cancel each other count, as they stand.
bool needsSlack(const Program& program, const Norms& best);

// Whether a feasible point with these norms counts.
bool counts(Goal goal, const Norms& best, const Norms& norms);

}  // namespace latbox::complete::proof
