// What a job brings: its points, how much it has looked at, and what it has left undone; for one piece of one
// manifest.
//
// The last line is a digest of all others, so that a file that is torn or damaged is none. Whether the points
// are points, and of this piece, says whoever reads it: nothing here believes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "complete/jobs/manifest.h"

namespace latbox::complete::jobs {

struct Result {
  // Of the line of the piece.
  unsigned long number = 0;
  std::string entry;
  unsigned long nodes = 0;
  // What is not done; empty: all is.
  std::vector<Piece> open;
  bool isOpenShare = false;
  // Of a share of a proof: the points that its walk has met.
  unsigned long met = 0;
  // With an objective: no point of what is done has a smaller target norm. Nothing: it has no point at all.
  std::optional<std::string> bound;
  // Points, listed or counted, and the lines of those that are listed.
  unsigned long points = 0;
  std::string lines;
  // As read from a file: the digest of all of it.
  std::string seal;

  bool isDone() const { return open.empty() && !isOpenShare; }
};

std::string textOf(const Result& result);
// Throws BadWords.
Result parseResult(std::string text);

}  // namespace latbox::complete::jobs
