// What is known and what is proven of a norm that is to be as small as can be.
//
// Idea: a search for points that are better by one unit alone would find the units one by one, and an
// objective may have a range of 10^12 of them. Half of the range, on the other hand, would have a search for
// each binary digit, most of which find nothing and cost about as much as the last one, the proof. So the
// next points must be better by a 64th of what is open: a search goes down in less than a hundred finds for
// each halving, and its end leaves a 64th.
#pragma once

#include <optional>

#include "complete/number.h"

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
  // The best value now, for hasHalved.
  void begin() { begin_ = best_; }
  // Whether less than half of what was open then is open now.
  bool hasHalved() const;

 private:
  std::optional<Integer> best_;
  std::optional<Integer> least_;
  std::optional<Integer> begin_;
};

}  // namespace latbox::complete
