#include "complete/jobs/cover.h"

#include <algorithm>

namespace latbox::complete::jobs {

bool Cover::Node::has(const Integer& candidate) const {
  return all || (up && candidate >= *up) || (down && candidate <= *down);
}

bool Cover::Node::addUp(const Integer& from) {
  if (all || up || (down && *down >= from) || below.lower_bound(from) != below.end()) return false;
  up = from;
  return true;
}

bool Cover::Node::addDown(const Integer& from) {
  if (all || down || (up && *up <= from)) return false;
  if (!below.empty() && below.begin()->first <= from) return false;
  down = from;
  return true;
}

bool Cover::add(const Piece& piece) {
  if (piece.empty()) {
    const bool isFirst = root_.isEmpty();
    root_.all = true;
    return isFirst;
  }
  Node* node = &root_;
  for (std::size_t i = 0; i < piece.size(); ++i) {
    const Choice& choice = piece[i];
    if (!choice.closedUp && !node->addUp(choice.up)) return false;
    if (!choice.closedDown && !node->addDown(choice.down)) return false;
    if (i + 1 == piece.size()) break;
    if (node->has(choice.chosen)) return false;
    node = &node->below[choice.chosen];
  }
  return true;
}

bool Cover::add(const std::vector<Piece>& pieces) {
  for (const Piece& piece : pieces)
    if (!add(piece)) return false;
  return true;
}

void Cover::Node::normalise() {
  for (auto next = below.begin(); next != below.end();) {
    next->second.normalise();
    next = next->second.isEmpty() ? below.erase(next) : std::next(next);
  }
  const auto takeAll = [this](const Integer& candidate) {
    const auto found = below.find(candidate);
    if (found == below.end() || !found->second.all) return false;
    below.erase(found);
    return true;
  };
  while (up && takeAll(*up - 1)) *up -= 1;
  while (down && takeAll(*down + 1)) *down += 1;
  if (!up || !down || *up != *down + 1) return;
  *this = {};
  all = true;
}

bool Cover::isSame(const Node& a, const Node& b) {
  if (a.all != b.all || a.up != b.up || a.down != b.down || a.below.size() != b.below.size()) return false;
  for (auto i = a.below.begin(), j = b.below.begin(); i != a.below.end(); ++i, ++j)
    if (i->first != j->first || !isSame(i->second, j->second)) return false;
  return true;
}

// Both are in their one form: a half-line is in another set only where that has one that holds it, or holds
// the candidates between singly, which that form does not leave.
bool Cover::isWithin(const Node& a, const Node& b) {
  if (b.all || a.isEmpty()) return true;
  if (a.all || (a.up && (!b.up || *a.up < *b.up)) || (a.down && (!b.down || *a.down > *b.down))) return false;
  for (const auto& [candidate, below] : a.below) {
    if (b.has(candidate)) continue;
    const auto found = b.below.find(candidate);
    if (found == b.below.end() || !isWithin(below, found->second)) return false;
  }
  return true;
}

bool isWithin(Cover& a, Cover& b) {
  a.root_.normalise();
  b.root_.normalise();
  return Cover::isWithin(a.root_, b.root_);
}

bool isWithin(const std::vector<Piece>& pieces, const std::vector<Piece>& others) {
  Cover a;
  Cover b;
  return a.add(pieces) && b.add(others) && isWithin(a, b);
}

bool Cover::isWhole() {
  root_.normalise();
  return root_.all;
}

bool isSame(Cover& a, Cover& b) {
  a.root_.normalise();
  b.root_.normalise();
  return Cover::isSame(a.root_, b.root_);
}

bool isSame(const std::vector<Piece>& pieces, const std::vector<Piece>& others) {
  Cover a;
  Cover b;
  return a.add(pieces) && b.add(others) && isSame(a, b);
}

bool isNothing(const Piece& piece) {
  return !piece.empty() && std::all_of(piece.begin(), piece.end(), [](const Choice& choice) {
    return choice.closedUp && choice.closedDown;
  });
}

std::size_t depthOf(const std::vector<Piece>& pieces) {
  std::size_t depth = 0;
  for (const Piece& piece : pieces) depth = std::max(depth, piece.size());
  return depth;
}

}  // namespace latbox::complete::jobs
