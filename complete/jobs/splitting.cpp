#include "complete/jobs/splitting.h"

#include <algorithm>
#include <cmath>
#include <queue>

#include "complete/lattice/reduction.h"
#include "complete/tree/walk.h"

namespace latbox::complete::jobs {
namespace {

constexpr unsigned long DOUBLE_BITS = 53;
constexpr unsigned long FIRST_FLOAT_BITS = 256;
constexpr unsigned long LAST_FLOAT_BITS = 1ul << 17;
// Parts for each portion; and what is not opened any more.
constexpr std::size_t PARTS = 3;
constexpr double SMALL = 50;
// What is larger than can be said.
constexpr double HUGE_PART = 1e100;
// Candidates of a level that are looked at at once.
constexpr unsigned long MANY = 100;
// Ways down for the estimate of a part: many for few parts.
constexpr std::size_t WAYS = 12000;
constexpr std::size_t LEAST_WAYS = 12;
constexpr std::size_t MOST_WAYS = 300;

struct Part {
  Piece piece;
  double nodes = 0;
  friend bool operator<(const Part& a, const Part& b) { return a.nodes < b.nodes; }
};

Choice closed(Integer chosen) {
  return {std::move(chosen), 0, 0, true, true};
}

// What is below the choices of the levels above the place, and with the candidates of that one alone.
Piece levelOf(const Piece& piece, std::size_t place) {
  Piece level;
  for (std::size_t i = 0; i < place; ++i) level.push_back(closed(piece[i].chosen));
  level.push_back(piece[place]);
  level.back().chosen = 0;
  return level;
}

template <class R>
class Splitter {
 public:
  Splitter(const CutTables<R>& tables, std::size_t count)
      : walk_(tables),
        rank_(tables.levels.size() - 1),
        count_(count),
        ways_(std::clamp(WAYS / count, LEAST_WAYS, MOST_WAYS)) {}

  std::vector<Portion> result(const std::vector<Piece>& pieces) {
    for (const Piece& piece : pieces) take(piece);
    while (!queue_.empty() && queue_.size() + done_.size() < PARTS * count_) {
      const Part part = queue_.top();
      queue_.pop();
      if (part.nodes < SMALL || !open(part)) done_.push_back(part);
    }
    for (; !queue_.empty(); queue_.pop()) done_.push_back(queue_.top());
    return portions();
  }

 private:
  // Each level that has candidates left becomes a part.
  void take(const Piece& piece) {
    if (rank_ == 0) {
      done_.push_back({piece, 1});
    } else if (piece.empty()) {
      add({});
    } else {
      for (std::size_t i = 0; i < piece.size(); ++i)
        if (!piece[i].closedUp || !piece[i].closedDown) addLevel(levelOf(piece, i));
    }
  }

  // All that is below these coefficients.
  void add(const IntegerVector& above) {
    const double nodes = 2 + sampled(above);
    queue_.push({walk_.below(above), nodes});
  }

  void addLevel(Piece piece) {
    double nodes = 2;
    for (const Integer& candidate : kept(piece).first) nodes += 1 + sampled(choicesOf(piece, candidate));
    queue_.push({std::move(piece), nodes});
  }

  double sampled(const IntegerVector& above) {
    if (above.size() == rank_) return 0;
    return std::min(walk_.sampledNodes(ways_, random_, above), HUGE_PART);
  }

  static IntegerVector choicesOf(const Piece& piece, const Integer& candidate) {
    IntegerVector choices;
    for (std::size_t i = 0; i + 1 < piece.size(); ++i) choices.push_back(piece[i].chosen);
    choices.push_back(candidate);
    return choices;
  }

  // Candidates of the lowest level that the cuts keep; and whether there are no more of them than these.
  std::pair<IntegerVector, bool> kept(const Piece& piece) {
    const std::size_t level = rank_ - piece.size();
    IntegerVector candidates;
    walk_.start(piece);
    walk_.askAt(level, true);
    walk_.pauseAt(level + 1, MANY);
    WalkPause pause = walk_.next();
    for (; pause == WalkPause::CANDIDATE && candidates.size() < MANY; pause = walk_.next())
      candidates.emplace_back(walk_.lambda()[level]);
    walk_.askAt(level, false);
    walk_.takeNodes();
    return {std::move(candidates), pause == WalkPause::CEILING || pause == WalkPause::END};
  }

  // The children of a part take its place, with what is left beside them. False: it has none worth it.
  bool open(const Part& part) {
    if (part.piece.size() + 1 >= rank_) return false;
    const auto [candidates, isAll] = kept(part.piece);
    if (candidates.empty()) return false;
    Piece rest = part.piece;
    const Choice& before = part.piece.back();
    Choice& left = rest.back();
    for (const Integer& candidate : candidates)
      if (!before.closedUp && candidate >= before.up)
        left.up = std::max(left.up, Integer(candidate + 1));
      else
        left.down = std::min(left.down, Integer(candidate - 1));
    // With those in between that the cuts refute, for the sake of the whole; whoever has written a piece by
    // hand may have made them any number.
    if ((!before.closedUp && left.up - before.up > MANY * PARTS) ||
        (!before.closedDown && before.down - left.down > MANY * PARTS))
      return false;
    for (Integer c = before.up; !before.closedUp && c < left.up; ++c) add(choicesOf(part.piece, c));
    for (Integer c = before.down; !before.closedDown && c > left.down; --c) add(choicesOf(part.piece, c));
    if (isAll)
      done_.push_back({std::move(rest), 2});
    else
      queue_.push({std::move(rest), part.nodes / 2});
    return true;
  }

  // The largest first, each to the portion that has least.
  std::vector<Portion> portions() {
    std::sort(done_.begin(), done_.end(), [](const Part& a, const Part& b) { return b < a; });
    std::vector<Portion> portions(std::min(count_, done_.size()));
    using Load = std::pair<double, std::size_t>;
    std::priority_queue<Load, std::vector<Load>, std::greater<>> loads;
    for (std::size_t i = 0; i < portions.size(); ++i) loads.emplace(0, i);
    for (Part& part : done_) {
      const std::size_t i = loads.top().second;
      loads.pop();
      portions[i].pieces.push_back(std::move(part.piece));
      portions[i].nodes += part.nodes;
      loads.emplace(portions[i].nodes, i);
    }
    return portions;
  }

  Walk<R> walk_;
  std::size_t rank_;
  std::size_t count_;
  std::size_t ways_;
  std::mt19937_64 random_{1};
  std::priority_queue<Part> queue_;
  std::vector<Part> done_;
};

// Nothing: the precision does not do.
template <class R>
std::optional<std::vector<Portion>> splitIn(unsigned long bits, BoxLattice& lattice,
                                            const std::vector<Piece>& pieces, std::size_t count) {
  const auto tables = cutTablesOf<R>(lattice, bits);
  if (!tables) return std::nullopt;
  return Splitter<R>(*tables, count).result(pieces);
}

}  // namespace

std::vector<Portion> split(BoxLattice& lattice, const std::vector<Piece>& pieces, std::size_t count) {
  const IntegerVector point = lattice.point;
  auto portions = splitIn<double>(DOUBLE_BITS, lattice, pieces, count);
  for (unsigned long bits = FIRST_FLOAT_BITS; !portions && bits <= LAST_FLOAT_BITS; bits *= 2)
    portions = splitIn<Float>(bits, lattice, pieces, count);
  if (!portions || lattice.point != point)
    throw ReductionFailure("the basis asks for more digits than there are");
  return std::move(*portions);
}

void settle(BoxLattice& lattice) {
  constexpr int MOST = 100;
  IntegerVector before;
  for (int i = 0; i < MOST && before != lattice.point; ++i) {
    before = lattice.point;
    if (cutTablesOf<double>(lattice, DOUBLE_BITS)) continue;
    for (unsigned long bits = FIRST_FLOAT_BITS; bits <= LAST_FLOAT_BITS; bits *= 2)
      if (cutTablesOf<Float>(lattice, bits)) break;
  }
}

}  // namespace latbox::complete::jobs
