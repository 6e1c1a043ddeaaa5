// From a program to its verdict: all points, a first one, or the best.
#pragma once

#include <string>

#include "complete/program/integer_program.h"
#include "complete/program/known_points.h"
#include "complete/program/objective.h"
#include "complete/solving/journal.h"

namespace latbox::complete {

// Receives what is found. Every point has been verified against the program as read.
class Finds {
 public:
  virtual ~Finds() = default;
  // The program is one that can be searched; nothing has been found yet.
  virtual void begin() = 0;
  // One more point of a list. Called by several threads at once.
  virtual void list(const Point& x, const Norms& norms) = 0;
  // So many more points of a list, as lines of the file.
  virtual void listLines(const std::string& lines, unsigned long points) {
    (void)lines;
    add(points);
  }
  // So many more points of a list, of which nobody wants more than their number.
  virtual void add(unsigned long points) { (void)points; }
  // The best point so far; it takes the place of the one before. Equally good ones may be listed behind it.
  virtual void replace(const Point& x, const Norms& norms) = 0;
  // No point has a smaller target norm, by proof.
  virtual void prove(const Rational& least) { (void)least; }
  // Of the points that are listed.
  virtual unsigned long count() const = 0;
};

struct Task {
  // List points, whatever their targets.
  bool all = false;
  // List all best points.
  bool ties = false;
  // End with the first point.
  bool first = false;
  // End with so many listed points; 0: no limit.
  unsigned long limit = 0;
  // Where the random bases of a first point begin.
  unsigned long seed = 0;
  // What others have found, of use where the best point is wanted; or none.
  KnownPoints* known = nullptr;
  // Where the best point is wanted: rows that are asked for beside the program's, and a point of the program,
  // which need not keep them, so that only better ones count.
  std::vector<Row> beside = {};
  std::optional<Point> start = {};
  // The target norm of `start` is proven to be the least.
  bool isLeast = false;
  // End with the least target norm, whatever the slack norm.
  bool normAlone = false;
};

enum class Outcome { COMPLETE, NONE, STOPPED };

// Throws BadInput if variables need bounds, ReductionFailure, std::logic_error if a point fails the
// verification.
Outcome solve(const Program& program, const Task& task, Finds& finds, Journal& journal);

}  // namespace latbox::complete
