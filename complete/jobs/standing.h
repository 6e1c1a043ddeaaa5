// Which pieces of a folder count, and how far they are.
//
// A piece counts by its result, or by all of its children; where its result has left something undone, by
// that result and the children that were made of what is left. Each of these steps is proven to lose nothing
// and to take nothing twice (cover.h), and so are the pieces without a parent to be all of the search.
#pragma once

#include <functional>

#include "complete/jobs/reports.h"

namespace latbox::complete::jobs {

enum class State {
  // There is no result yet.
  OPEN,
  DONE,
  // The result has left something undone, of which there are no children yet.
  PARTIAL,
  // Children stand for it, or for what its result has left.
  SPLIT
};

struct Standing {
  const Entry* entry;
  State state;
  // That counts, without its lines.
  std::optional<Result> result;
};

// Of all pieces that matter, in order. What is damaged is told by `complain`, a line each, and counts as not
// there. Throws BadFolder if pieces do not make up what they should.
std::vector<Standing> standings(const Folder& folder, const Reports& reports,
                                const std::function<void(const std::string&)>& complain);

// What the children of a piece with this result are made of: empty for all of it.
std::string sourceOf(const Result* result);

}  // namespace latbox::complete::jobs
