// Threads that walk through the pieces of a tree, and share what is left when one of them has nothing to do.
#pragma once

#include <memory>

#include "complete/tree/search.h"

namespace latbox::complete {

// A walk of one thread.
class PieceWalk {
 public:
  enum class Pause { LOOK, END, STOP };

  virtual ~PieceWalk() = default;
  virtual void start(const Piece& piece) = 0;
  // Goes on for some thousand candidates, to the end of its piece, or until nobody wants more.
  virtual Pause goOn() = 0;
  // Of a walk that has not come to its end: what is left, its share of the tree, and a part of it for
  // another.
  virtual Piece rest() const = 0;
  virtual double share() const = 0;
  virtual bool split(Piece& other) = 0;
  virtual unsigned long takeNodes() = 0;
};

// Walks through the pieces, with control.threads walks that `make` makes; without pieces, the whole tree. A
// trial is one walk alone, and ends after so many candidates. True: to the end. As search() else.
bool walkThrough(const std::function<std::unique_ptr<PieceWalk>()>& make, std::vector<Piece> pieces,
                 SearchControl& control, unsigned long trial = 0);

}  // namespace latbox::complete
