#include "complete/proof/best_point.h"

#include <utility>

#include "complete/program/objective.h"
#include "complete/program/presolve.h"
#include "complete/proof/lattice.h"
#include "complete/solving/closing.h"

namespace latbox::complete::proof {
namespace {

constexpr unsigned long LARGEST_BOX = 40;

// Ends with the first point of these norms.
class Finding : public Visitor {
 public:
  Finding(const Program& program, const Norms& norms) : program_(program), norms_(norms) {}

  Next visit(const IntegerVector& z) override {
    Point x = pointOf(program_, z);
    if (!isFeasible(program_, x) || normsOf(program_, x) != norms_) return Next::GO_ON;
    point_ = std::move(x);
    return Next::STOP;
  }
  const std::optional<Point>& point() const { return point_; }

 private:
  const Program& program_;
  const Norms& norms_;
  std::optional<Point> point_;
};

IntegerProgram programOf(const Program& program, const Norms& norms) {
  IntegerProgram whole = integerProgramOf(program);
  const Objective objective(program);
  const Objective slack = objective.slackNorm();
  const Integer value = objective.valueOf(norms);
  for (Row& row : objective.rows(value, value)) whole.rows.push_back(std::move(row));
  const Integer least = slack.valueOf(norms);
  if (objective.needsSlackNorm())
    for (Row& row : slack.rows(least, least)) whole.rows.push_back(std::move(row));
  return whole;
}

}  // namespace

Point bestPointOf(const Program& program, const Norms& norms, SearchControl& control) {
  IntegerProgram bests = programOf(program, norms);
  Finding finding(program, norms);
  // The same point whatever the threads.
  const unsigned threads = std::exchange(control.threads, 1u);
  const bool isClosed = tighten(bests) && closeByRows(bests) && openVariables(bests).empty();
  for (unsigned long bits = 0; bits <= LARGEST_BOX; bits += 2) {
    IntegerProgram boxed = bests;
    clip(boxed, Integer(1) << bits);
    if (auto lattice = boxLatticeOf(boxed)) search(*lattice, finding, control);
    if (control.stop) throw NoProof("the run was stopped");
    if (finding.point() || isClosed) break;
  }
  control.threads = threads;
  if (finding.point()) return *finding.point();
  throw std::logic_error("the best point is not found again");
}

}  // namespace latbox::complete::proof
