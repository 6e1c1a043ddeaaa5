// Whether pieces are all of a tree, and no part of it twice.
//
// Nothing is computed here but with the pieces themselves: a piece is a set of sequences of whole numbers,
// from the last level down, and two lists of pieces are the same set or they are not, whatever the program.
// So the search that is done in pieces is the whole search by this alone.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

class Cover {
 public:
  // False: a part of it is there already. Then this is of no further use.
  bool add(const Piece& piece);
  // False at the first piece of which a part is there twice.
  bool add(const std::vector<Piece>& pieces);

  // Requires that nothing is added any more.
  bool isWhole();
  friend bool isSame(Cover& a, Cover& b);
  // Whether all of it is in the other one.
  friend bool isWithin(Cover& a, Cover& b);

 private:
  // What is there of the sequences that begin alike: all, or those that go on with candidates from `up` on,
  // from `down` on downwards, or as `below` has it.
  struct Node {
    bool all = false;
    std::optional<Integer> up;
    std::optional<Integer> down;
    std::map<Integer, Node> below;

    bool has(const Integer& candidate) const;
    bool isEmpty() const { return !all && !up && !down && below.empty(); }
    bool addUp(const Integer& from);
    bool addDown(const Integer& from);
    // Every set gets one form.
    void normalise();
  };

  static bool isSame(const Node& a, const Node& b);
  static bool isWithin(const Node& a, const Node& b);

  Node root_;
};

// Whether these pieces, no part of which is there twice, are a part of those.
bool isWithin(const std::vector<Piece>& pieces, const std::vector<Piece>& others);

// Whether these pieces are those, each part of them once.
bool isSame(const std::vector<Piece>& pieces, const std::vector<Piece>& others);

// Whether nothing is left of it: all its levels are closed.
bool isNothing(const Piece& piece);

// Levels of the longest one. A search knows no more than its lattice's rank: what goes deeper holds no point
// of it, and is no piece of it.
std::size_t depthOf(const std::vector<Piece>& pieces);

}  // namespace latbox::complete::jobs
