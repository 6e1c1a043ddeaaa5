// What is known and what is proven of a norm that is to be as small as can be.
//
// Idea: searches for points that are better by one unit alone would find the units one by one, and an
// objective may have a range of 10^12 of them. Halving the range, on the other hand, takes a search for each
// binary digit, half of which find nothing and cost about as much as the last one, the proof. So the next
// point must be better by a 64th of what is open: finds are cheap, mostly they are better by much more, and a
// search that finds nothing leaves a 64th.
#pragma once

#include <optional>

#include "complete/program/number.h"

namespace latbox::complete {

// Values are in units of the objective.
class Window {
 public:
  static constexpr unsigned long PARTS = 64;

  // A point has this value.
  void improve(const Integer& value) { best_ = value; }
  // No point has less, by proof.
  void raise(const Integer& least);

  bool isClosed() const { return best_ && least_ && *best_ <= *least_; }
  const std::optional<Integer>& least() const { return least_; }
  // The greatest value that the next points may have. Requires a point.
  Integer limit() const;

 private:
  std::optional<Integer> best_;
  std::optional<Integer> least_;
};

}  // namespace latbox::complete
