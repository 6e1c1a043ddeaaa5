#include "complete/tree/search.h"

#include <algorithm>
#include <utility>

#include "complete/lattice/reduction.h"
#include "complete/tree/adaptive_bounds.h"
#include "complete/tree/leaf.h"
#include "complete/tree/walk.h"
#include "complete/tree/workers.h"

namespace latbox::complete {
namespace {

constexpr unsigned long DOUBLE_BITS = 53;
constexpr unsigned long FIRST_FLOAT_BITS = 256;
constexpr unsigned long LAST_FLOAT_BITS = 1ul << 17;

// In the place of AdaptiveBounds where numbers are long.
class NoBounds {
 public:
  struct Range {
    Float least;
    Float greatest;
  };
  NoBounds(const BoxLattice&, const FloatVector&) {}
  void enter(std::size_t) {}
  void countCandidates(unsigned long) {}
  bool isOn(std::size_t) const { return false; }
  const Range* excluding(std::size_t, const FloatVector&) { return nullptr; }
  bool isTrialOver(std::size_t) const { return false; }
  std::size_t endTrial(std::size_t t) { return t; }
  std::optional<std::size_t> trialLevel() const { return std::nullopt; }
  unsigned long trialCandidates() const { return BETWEEN_LOOKS; }
  void cancelTrial() {}
  void review(unsigned long) {}
};

template <class R>
using Bounds = std::conditional_t<std::is_same_v<R, double>, AdaptiveBounds, NoBounds>;

// A walk with what it does at its candidates and leaves.
template <class R>
class PointWalk : public PieceWalk {
 public:
  PointWalk(const BoxLattice& lattice, const CutTables<R>& tables, const SearchSettings& settings,
            Visitor& visitor)
      : lattice_(lattice),
        visitor_(visitor),
        leaf_(lattice),
        walk_(tables, settings.caps),
        bounds_(lattice, tables.reach) {}

  void start(const Piece& piece) override {
    bounds_.cancelTrial();
    walk_.start(piece);
    arrange();
  }
  Piece rest() const override { return walk_.rest(bounds_.trialLevel().value_or(0)); }
  double share() const override { return walk_.share(); }
  bool split(Piece& other) override { return walk_.split(other, bounds_.trialLevel().value_or(0)); }
  unsigned long takeNodes() override { return std::exchange(nodes_, 0ul); }

  Pause goOn() override {
    while (true) {
      WalkPause pause = walk_.next();
      count();
      if (pause == WalkPause::END) return Pause::END;
      if (pause == WalkPause::CANDIDATE) pause = decide();
      if (pause == WalkPause::LEAF && !visitLeaf()) return Pause::STOP;
      // What a trial leaves holds no point.
      if (bounds_.isTrialOver(walk_.level())) walk_.leaveBelow(bounds_.endTrial(walk_.level()));
      walk_.pauseAt(bounds_.trialLevel().value_or(Walk<R>::NO_CEILING), bounds_.trialCandidates());
      if (sinceLook_ < BETWEEN_LOOKS) continue;
      arrange();
      return Pause::LOOK;
    }
  }

 private:
  void count() {
    const unsigned long nodes = walk_.takeNodes();
    nodes_ += nodes;
    sinceLook_ += nodes + 1;
    bounds_.countCandidates(nodes);
  }

  // Where the walk asks.
  void arrange() {
    bounds_.review(std::exchange(sinceLook_, 0ul));
    for (std::size_t t = 0; t < lattice_.rank(); ++t) walk_.askAt(t, bounds_.isOn(t));
    walk_.pauseAt(bounds_.trialLevel().value_or(Walk<R>::NO_CEILING), bounds_.trialCandidates());
  }

  // Of a candidate that the cuts have kept.
  WalkPause decide() {
    const std::size_t t = walk_.level();
    if (walk_.isNew()) bounds_.enter(t);
    const auto* range = bounds_.excluding(t, walk_.lambda());
    walk_.askAt(t, bounds_.isOn(t) || range);
    if (!range) return walk_.accept();
    walk_.refuse(range->least, range->greatest);
    return WalkPause::CANDIDATE;
  }

  // False: the visitor has had enough.
  bool visitLeaf() {
    const IntegerVector* z = leaf_.pointOf(walk_.lambda());
    if (!z) return true;
    const Next next = visitor_.visit(*z);
    if (next == Next::REFUSED) walk_.takeBack();
    return next != Next::STOP && next != Next::REFUSED;
  }

  const BoxLattice& lattice_;
  Visitor& visitor_;
  Leaf leaf_;
  Walk<R> walk_;
  Bounds<R> bounds_;
  unsigned long nodes_ = 0;
  unsigned long sinceLook_ = 0;
};

// False: the precision does not do.
template <class R>
bool searchIn(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
              const SearchSettings& settings, bool& complete) {
  const auto tables = cutTablesOf<R>(lattice, bits);
  if (!tables) return false;
  complete = walkThrough([&] { return std::make_unique<PointWalk<R>>(lattice, *tables, settings, visitor); },
                         settings.pieces, control, settings.trial);
  return true;
}

// Takes what comes until a number of candidates is reached.
class Sizing : public Visitor {
 public:
  Next visit(const IntegerVector&) override { return Next::GO_ON; }
};

}  // namespace

std::chrono::steady_clock::time_point SearchControl::nextKeep() const {
  constexpr double LONGEST = 1e9;
  using Clock = std::chrono::steady_clock;
  if (!keep || keepEvery <= 0) return Clock::time_point::max();
  const std::chrono::duration<double> between(std::min(keepEvery, LONGEST));
  return lastKeep + std::chrono::duration_cast<Clock::duration>(between);
}

bool isSmall(BoxLattice& lattice, unsigned long candidates) {
  const auto tables = cutTablesOf<double>(lattice, DOUBLE_BITS);
  if (!tables) return false;
  Sizing visitor;
  PointWalk<double> walk(lattice, *tables, {}, visitor);
  walk.start({});
  for (unsigned long nodes = 0; nodes < candidates; nodes += walk.takeNodes())
    if (walk.goOn() == PieceWalk::Pause::END) return true;
  return false;
}

bool searchWith(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
                const SearchSettings& settings) {
  bool complete = false;
  if (bits == DOUBLE_BITS && searchIn<double>(bits, lattice, visitor, control, settings, complete))
    return complete;
  for (bits = std::max(bits, FIRST_FLOAT_BITS); bits <= LAST_FLOAT_BITS; bits *= 2)
    if (searchIn<Float>(bits, lattice, visitor, control, settings, complete)) return complete;
  throw ReductionFailure("the basis asks for more digits than there are");
}

bool search(BoxLattice& lattice, Visitor& visitor, SearchControl& control, const SearchSettings& settings) {
  return searchWith(DOUBLE_BITS, lattice, visitor, control, settings);
}

}  // namespace latbox::complete
