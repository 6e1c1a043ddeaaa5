#include "complete/search.h"

#include <cmath>

#include "complete/adaptive_bounds.h"
#include "complete/cuts.h"
#include "complete/hot_loops.h"
#include "complete/leaf.h"
#include "complete/reduction.h"

namespace latbox::complete {
namespace {

constexpr unsigned long DOUBLE_BITS = 53;
constexpr unsigned long FIRST_FLOAT_BITS = 256;
constexpr unsigned long LAST_FLOAT_BITS = 1ul << 17;
// A look at the switch after so many candidates.
constexpr unsigned long BETWEEN_LOOKS = 4096;

double magnitude(double value) {
  return std::fabs(value);
}

Float magnitude(const Float& value) {
  return abs(value);
}

double roundDown(double value) {
  return std::floor(value);
}

Float roundDown(const Float& value) {
  return floor(value);
}

// In the place of AdaptiveBounds where numbers are long.
class NoBounds {
 public:
  struct Range {
    Float least;
    Float greatest;
  };
  NoBounds(const BoxLattice&, const FloatVector&) {}
  void narrow(std::size_t, const Integer&, const Integer&) {}
  void enter(std::size_t) {}
  const Range* excluding(std::size_t, const FloatVector&) { return nullptr; }
  bool isTrialOver(std::size_t) { return false; }
  std::size_t endTrial(std::size_t t) { return t; }
  void review(unsigned long) {}
};

template <class R>
using Bounds = std::conditional_t<std::is_same_v<R, double>, AdaptiveBounds, NoBounds>;

template <class R>
class TreeSearch {
 public:
  TreeSearch(const BoxLattice& lattice, const CutTables<R>& tables, Visitor& visitor, SearchControl& control)
      : lattice_(lattice),
        tables_(tables),
        visitor_(visitor),
        control_(control),
        leaf_(lattice),
        bounds_(lattice, tables.reach),
        k_(lattice.rank()) {
    states_.resize(k_ + 1);
    lambda_.resize(k_);
    for (State& state : states_) state.w.resize(tables_.levels[0].g.size());
    for (std::size_t t = 0; t <= k_; ++t)
      limits_.push_back({tables_.levels[t].most, tables_.levels[t].least});
  }

  // False: stopped.
  bool run() {
    if (!enterRoot()) return true;
    if (k_ == 0) return leaf();
    std::size_t t = k_ - 1;
    enter(t);
    while (t < k_) {
      if (bounds_.isTrialOver(t)) t = bounds_.endTrial(t);
      if (states_[t].closedUp && states_[t].closedDown) {
        ++t;
        continue;
      }
      if (++sinceLook_ == BETWEEN_LOOKS && !look()) return false;
      if (!step(t)) continue;
      if (t == 0) {
        if (!leaf()) return false;
      } else {
        enter(--t);
      }
    }
    look();
    return true;
  }

 private:
  struct State {
    // The next candidates on both sides of the centre, and which sides are refuted.
    R up{};
    R down{};
    bool closedUp = false;
    bool closedDown = false;
    // g u at lambda = 0, as far as it is known, and where it is 0.
    R base{};
    R centre{};
    // The cut: the vector W and its product with the point.
    std::vector<R> w;
    R value{};
  };

  // Greatest and least g u in what the limits leave of the cube.
  struct Limit {
    R most;
    R least;
  };

  // The coordinate of a row whose range has shrunk since the tables were made: the ends in the cube, 1 and -1
  // at first.
  struct Shrunk {
    std::size_t coordinate;
    R high;
    R low;
  };

  bool look() {
    control_.nodes += sinceLook_;
    bounds_.review(sinceLook_);
    sinceLook_ = 0;
    return !control_.stop.load(std::memory_order_relaxed);
  }

  // The constant part of the cut. False: it refutes everything.
  bool enterRoot() {
    const auto& level = tables_.levels[k_];
    State& state = states_[k_];
    const R a = level.constant * level.inverseNorm;
    const std::vector<R> zeros(level.g.size());
    const R size = addScaled(state.w, zeros, level.g, a);
    state.value = a * level.constant;
    return !(magnitude(level.constant) > level.size + level.slip) && !(state.value > size + level.margin);
  }

  void enter(std::size_t t) {
    const auto& level = tables_.levels[t];
    State& state = states_[t];
    const R sum = level.constant + partialProduct(lambda_, level.products, t + 1);
    state.base = sum;
    // The point of the limits that is nearest to the Gram-Schmidt vector's own centre.
    const Limit& limit = limits_[t];
    R nearest(0);
    if (limit.most < 0) nearest = limit.most;
    if (-limit.least > 0) nearest = -limit.least;
    state.centre = (nearest - sum) / level.products[t];
    state.down = roundDown(state.centre);
    state.up = state.down + 1;
    state.closedUp = state.closedDown = false;
    bounds_.enter(t);
  }

  // Takes the candidate nearest to the centre. True: not refuted.
  bool step(std::size_t t) {
    const auto& level = tables_.levels[t];
    State& state = states_[t];
    const bool up =
        state.closedDown || (!state.closedUp && state.up - state.centre <= state.centre - state.down);
    R& lambda = lambda_[t];
    lambda = up ? state.up : state.down;
    (up ? state.up : state.down) += up ? 1 : -1;
    const R product = state.base + lambda * level.products[t];
    const bool above = product > limits_[t].most + level.slip;
    const bool below = -product > limits_[t].least + level.slip;
    if (above || below) {
      state.closedUp = state.closedUp || (above && up);
      state.closedDown = state.closedDown || (below && !up);
      return false;
    }
    const State& parent = states_[t + 1];
    const R a = product * level.inverseNorm;
    state.value = parent.value + a * product;
    const R size = addScaled(state.w, parent.w, level.g, a);
    if (state.value > most(state.w, size) + level.margin) {
      close(state, up, product);
      return false;
    }
    return isInRange(t);
  }

  // Whether the linear program leaves the candidate, where it is asked.
  bool isInRange(std::size_t t) {
    const auto* range = bounds_.excluding(t, lambda_);
    if (!range) return true;
    State& state = states_[t];
    if (lambda_[t] > range->greatest) {
      state.closedUp = true;
      state.down = std::min(state.down, range->greatest);
    }
    if (lambda_[t] < range->least) {
      state.closedDown = true;
      state.up = std::max(state.up, range->least);
    }
    return false;
  }

  // With the same multiplier the value grows in the direction in which g u has its sign: what refutes this
  // candidate refutes all further ones there. The other way the candidates are looked at one by one.
  static void close(State& state, bool up, const R& product) {
    if (up && product >= 0) state.closedUp = true;
    if (!up && product <= 0) state.closedDown = true;
  }

  // The greatest W u in what the limits leave of the cube.
  R most(const std::vector<R>& w, const R& size) const {
    R sum = size;
    for (const Shrunk& shrunk : shrunk_) {
      const R& entry = w[shrunk.coordinate];
      sum -= entry > 0 ? R(entry * (1 - shrunk.high)) : R(-entry * (1 + shrunk.low));
    }
    return sum;
  }

  // False: stopped.
  bool leaf() {
    const std::optional<IntegerVector> v = leaf_.pointOf(lambda_);
    if (!v) return true;
    const Next next = visitor_.visit(lattice_.allVariables(*v));
    if (next == Next::LIMIT) shrink();
    return next != Next::STOP;
  }

  // Takes the limit of the target norm into the ranges of its rows, and these into the cuts. Only what is
  // behind is excluded, so that the search goes on where it is.
  void shrink() {
    shrunk_.clear();
    const std::size_t n = lattice_.variables.size();
    for (std::size_t r = 0; r < lattice_.rows.size(); ++r) {
      Row row = lattice_.rows[r];
      if (row.kind == RowKind::CONDITION) continue;
      limitRow(row, visitor_.limit());
      const std::size_t j = n + r;
      leaf_.narrow(j, *row.range.low, *row.range.high);
      bounds_.narrow(j, *row.range.low, *row.range.high);
      shrunk_.push_back({j, inCube(j, *row.range.high), inCube(j, *row.range.low)});
    }
    for (std::size_t t = 0; t <= k_; ++t) {
      const std::vector<R>& g = tables_.levels[t].g;
      limits_[t].most = std::min(tables_.levels[t].most, most(g, tables_.levels[t].size));
      std::vector<R> opposite(g.size());
      for (std::size_t j = 0; j < g.size(); ++j) opposite[j] = -g[j];
      limits_[t].least = std::min(tables_.levels[t].least, most(opposite, tables_.levels[t].size));
    }
  }

  // An end of a range in the coordinates of the cube; what rounding can do to it is a part of the margins. An
  // end beyond the other side leaves nothing: the cube's own end is as good, since the leaf asks again.
  R inCube(std::size_t j, const Integer& end) const {
    Rational u(Integer(2 * end - lattice_.low[j] - lattice_.high[j]),
               Integer(lattice_.high[j] - lattice_.low[j]));
    u.canonicalize();
    if (u > 1) u = 1;
    if (u < -1) u = -1;
    const Float wide(u, 256);
    if constexpr (std::is_same_v<R, double>)
      return wide.get_d();
    else
      return wide;
  }

  const BoxLattice& lattice_;
  const CutTables<R>& tables_;
  Visitor& visitor_;
  SearchControl& control_;
  Leaf leaf_;
  Bounds<R> bounds_;
  std::size_t k_;
  std::vector<State> states_;
  // What is chosen at each level.
  std::vector<R> lambda_;
  std::vector<Limit> limits_;
  std::vector<Shrunk> shrunk_;
  unsigned long sinceLook_ = 0;
};

// False: the precision does not do.
template <class R>
bool searchIn(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
              bool& complete) {
  const auto tables = cutTablesOf<R>(lattice, bits);
  if (!tables) return false;
  complete = TreeSearch<R>(lattice, *tables, visitor, control).run();
  return true;
}

}  // namespace

bool searchWith(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control) {
  bool complete = false;
  if (bits == DOUBLE_BITS && searchIn<double>(bits, lattice, visitor, control, complete)) return complete;
  for (bits = std::max(bits, FIRST_FLOAT_BITS); bits <= LAST_FLOAT_BITS; bits *= 2)
    if (searchIn<Float>(bits, lattice, visitor, control, complete)) return complete;
  throw ReductionFailure("the basis asks for more digits than there are");
}

bool search(BoxLattice& lattice, Visitor& visitor, SearchControl& control) {
  return searchWith(DOUBLE_BITS, lattice, visitor, control);
}

}  // namespace latbox::complete
