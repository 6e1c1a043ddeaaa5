// The points of a result, none of which is believed.
#pragma once

#include <functional>

#include "complete/jobs/coefficients.h"
#include "complete/jobs/result.h"
#include "complete/verification.h"

namespace latbox::complete::jobs {

class PointReader {
 public:
  // Of lists of points, or of better and better ones. Both must outlive this.
  PointReader(const Program& program, const PieceLattice& lattice, bool isListing);

  // The points of the lines, as many as the result says, each verified against the program as it was read;
  // those of a list to belong to the entry, and not to what the result has left. Throws BadWords with the
  // line.
  void read(const Result& result, const Entry& entry, const std::function<void(const Point&)>& take) const;

 private:
  IntegerVector wholeOf(std::string_view line) const;

  const Program& program_;
  bool isListing_;
  Verification verification_;
  Coefficients coefficients_;
  std::vector<long> steps_;
};

}  // namespace latbox::complete::jobs
