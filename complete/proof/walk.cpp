#include "complete/proof/walk.h"

#include <thread>

#include "complete/proof/walk_input.h"
#include "complete/proof/walk_numbers.h"

namespace latbox::complete::proof {
namespace {

constexpr std::int64_t SIGNED_UNIT = UNIT;

template <class Kind>
struct Tables {
  using Scalar = typename Kind::Scalar;
  using Vector = std::vector<typename Kind::Entry>;

  struct Form {
    Scalar start;
    std::vector<Scalar> steps;
    Scalar size;

    explicit Form(const Product& product)
        : start(Kind::scalar(product.start)),
          steps(scalars(product.steps)),
          size(Kind::scalar(product.size)) {}
  };

  static std::vector<Scalar> scalars(const IntegerVector& values) {
    std::vector<Scalar> result;
    for (const Integer& value : values) result.push_back(Kind::scalar(value));
    return result;
  }
  static Vector padded(const IntegerVector& values) {
    Vector result;
    for (const Integer& value : values) result.push_back(Kind::entry(value));
    result.resize((values.size() + WIDTH - 1) / WIDTH * WIDTH);
    return result;
  }

  explicit Tables(const WalkInput& input)
      : divisors(scalars(input.divisors)),
        top(padded(input.top)),
        topValue(Kind::scalar(input.topValue)),
        least(scalars(input.least)),
        most(scalars(input.most)) {
    for (std::size_t t = 0; t < input.mains.size(); ++t) {
      mains.emplace_back(input.mains[t]);
      vectors.push_back(padded(input.weighted[t]));
      sides.emplace_back(input.sides[t].begin(), input.sides[t].end());
    }
  }

  std::vector<Form> mains;
  std::vector<std::vector<Form>> sides;
  std::vector<Vector> vectors;
  std::vector<Scalar> divisors;
  Vector top;
  Scalar topValue;
  std::vector<Scalar> least;
  std::vector<Scalar> most;
};

struct Shared {
  const WalkSettings& settings;
  std::atomic<unsigned long> nodes = 0;
  std::atomic<unsigned long> points = 0;
  std::atomic<bool> isOver = false;
};

template <class Kind>
class Walker {
 public:
  using Scalar = typename Kind::Scalar;
  using Vector = typename Tables<Kind>::Vector;

  Walker(const ProofLattice& lattice, const Tables<Kind>& tables, const Judge& judge, Shared& shared)
      : lattice_(lattice),
        tables_(tables),
        judge_(judge),
        shared_(shared),
        k_(lattice.rank()),
        levels_(k_),
        lambda_(k_),
        values_(k_ + 1),
        vectors_(k_ + 1, tables.top) {
    values_[k_] = tables.topValue;
    for (std::size_t t = 0; t < k_; ++t) levels_[t].sides.resize(tables.sides[t].size());
    for (std::size_t i = 0; i < k_; ++i) {
      basis_.emplace_back();
      for (const Integer& entry : lattice.box.basis[i]) basis_.back().push_back(Kind::scalar(entry));
    }
  }

  // From here on candidates that the cuts have kept are shown to this, until it adds no more to `tables`.
  void ask(const Refuter& refuter, const WalkInput& input, CutVectors& cuts, Tables<Kind>& tables) {
    asking_ = {&refuter, &input, &cuts, &tables};
  }

  // All below the node with these multipliers of the last levels. Nodes of level `floor` are told and not
  // entered; floor = 0: leaves are judged.
  void run(const std::vector<Scalar>& above, std::size_t floor,
           const std::function<void(const std::vector<Scalar>&)>& tell) {
    const std::size_t top = k_ - above.size();
    for (std::size_t t = k_; t-- > top;) follow(t, above[t - top]);
    if (top == 0) {
      visitLeaf();
      return;
    }
    std::size_t t = top - 1;
    enter(t);
    while (t < top) {
      if (!next(t)) {
        ++t;
        continue;
      }
      if (++sinceLook_ >= BETWEEN_LOOKS && !look()) return;
      if (isRefuted(t) || (asking_.refuter && isRefutedAnew(t))) continue;
      if (t == floor && tell) {
        tell({lambda_.begin() + static_cast<std::ptrdiff_t>(t), lambda_.end()});
      } else if (t == 0) {
        visitLeaf();
      } else {
        enter(--t);
      }
    }
    look();
  }

 private:
  static constexpr unsigned long BETWEEN_LOOKS = std::is_same_v<Kind, Short> ? 4096 : 64;

  struct State {
    Scalar start{};
    std::vector<Scalar> sides;
    Scalar up{};
    Scalar down{};
    bool isUpClosed = false;
    bool isDownClosed = false;
    // Of the candidate.
    Scalar value{};
  };

  Scalar valueAbove(const typename Tables<Kind>::Form& form, std::size_t t) const {
    Scalar value = form.start;
    for (std::size_t i = t + 1; i < k_; ++i) value += form.steps[i] * lambda_[i];
    return value;
  }

  void enter(std::size_t t) {
    State& state = levels_[t];
    const auto& main = tables_.mains[t];
    state.start = valueAbove(main, t);
    for (std::size_t s = 0; s < state.sides.size(); ++s) state.sides[s] = valueAbove(tables_.sides[t][s], t);
    state.down = floorDivided(Scalar(-state.start), main.steps[t]);
    state.up = state.down + 1;
    if (state.down > tables_.most[t]) state.down = tables_.most[t];
    if (state.up < tables_.least[t]) state.up = tables_.least[t];
    state.isUpClosed = state.isDownClosed = false;
  }

  // The next candidate of the level becomes lambda_t. False: there is none.
  bool next(std::size_t t) {
    State& state = levels_[t];
    state.isDownClosed = state.isDownClosed || state.down < tables_.least[t];
    state.isUpClosed = state.isUpClosed || state.up > tables_.most[t];
    if (state.isDownClosed && state.isUpClosed) return false;
    const Scalar& step = tables_.mains[t].steps[t];
    const bool upwards =
        state.isDownClosed || (!state.isUpClosed && 2 * state.start + (state.up + state.down) * step <= 0);
    lambda_[t] = upwards ? state.up : state.down;
    if (upwards)
      state.up += 1;
    else
      state.down -= 1;
    state.value = state.start + lambda_[t] * step;
    return true;
  }

  // By the three tests; closes directions.
  bool isRefuted(std::size_t t) {
    State& state = levels_[t];
    const auto& main = tables_.mains[t];
    if (state.value > main.size) {
      state.isUpClosed = true;
      return true;
    }
    if (state.value < -main.size) {
      state.isDownClosed = true;
      return true;
    }
    const Scalar factor = factorOf(t);
    const Scalar size = addScaled(vectors_[t], vectors_[t + 1], tables_.vectors[t], factor);
    values_[t] = values_[t + 1] + factor * state.value;
    if (values_[t] > size || values_[t] < -size) {
      close(state, factor, values_[t] < 0);
      return true;
    }
    for (std::size_t s = 0; s < state.sides.size(); ++s) {
      const auto& side = tables_.sides[t][s];
      const Scalar value = state.sides[s] + side.steps[t] * lambda_[t];
      if (value <= side.size && value >= -side.size) continue;
      close(state, side.steps[t], value < 0);
      return true;
    }
    return false;
  }

  Scalar factorOf(std::size_t t) const {
    const Scalar& n = tables_.divisors[t];
    return floorDivided(Scalar(2 * SIGNED_UNIT * levels_[t].value + n), Scalar(2 * n));
  }

  // With one more side vector of the level.
  bool isRefutedAnew(std::size_t t) {
    std::vector<IntegerVector>& sides = asking_.cuts->levels[t].sides;
    if (sides.size() >= MOST_SIDES) return false;
    IntegerVector whole;
    for (const Scalar& multiplier : lambda_) whole.push_back(Kind::whole(multiplier));
    std::optional<IntegerVector> side = (*asking_.refuter)(t, whole);
    if (!side) return false;
    State& state = levels_[t];
    const typename Tables<Kind>::Form form(asking_.input->productOf(*side, t));
    state.sides.push_back(valueAbove(form, t));
    const Scalar value = state.sides.back() + form.steps[t] * lambda_[t];
    close(state, form.steps[t], value < 0);
    asking_.tables->sides[t].push_back(form);
    sides.push_back(std::move(*side));
    return true;
  }

  static void close(State& state, const Scalar& slope, bool isNegative) {
    if (slope == 0 || (slope > 0) != isNegative) state.isUpClosed = true;
    if (slope == 0 || (slope > 0) == isNegative) state.isDownClosed = true;
  }

  // A node that was met before.
  void follow(std::size_t t, const Scalar& lambda) {
    lambda_[t] = lambda;
    State& state = levels_[t];
    state.value = valueAbove(tables_.mains[t], t) + tables_.mains[t].steps[t] * lambda;
    const Scalar factor = factorOf(t);
    addScaled(vectors_[t], vectors_[t + 1], tables_.vectors[t], factor);
    values_[t] = values_[t + 1] + factor * state.value;
  }

  void visitLeaf() {
    const BoxLattice& box = lattice_.box;
    IntegerVector z = box.fixed;
    for (std::size_t c = 0; c < lattice_.columns(); ++c) {
      Scalar value = Kind::scalar(box.point[c]);
      for (std::size_t i = 0; i < k_; ++i) value += lambda_[i] * basis_[i][c];
      const Integer whole = Kind::whole(value);
      if (whole < box.low[c] || whole > box.high[c]) return;
      if (c < box.variables.size()) z[box.variables[c]] = whole;
    }
    if (judge_(z)) ++shared_.points;
  }

  // False: the walk is over.
  bool look() {
    shared_.nodes += sinceLook_;
    sinceLook_ = 0;
    const WalkSettings& settings = shared_.settings;
    if ((settings.stop && *settings.stop) || (settings.most != 0 && shared_.nodes > settings.most))
      shared_.isOver = true;
    return !shared_.isOver;
  }

  static constexpr std::size_t MOST_SIDES = 100;

  struct Asking {
    const Refuter* refuter = nullptr;
    const WalkInput* input = nullptr;
    CutVectors* cuts = nullptr;
    Tables<Kind>* tables = nullptr;
  };

  const ProofLattice& lattice_;
  const Tables<Kind>& tables_;
  const Judge& judge_;
  Shared& shared_;
  std::size_t k_;
  std::vector<State> levels_;
  std::vector<Scalar> lambda_;
  // V_t and W_t times the widths.
  std::vector<Scalar> values_;
  std::vector<Vector> vectors_;
  std::vector<std::vector<Scalar>> basis_;
  unsigned long sinceLook_ = 0;
  Asking asking_;
};

// Large enough that threads which begin late have something to do.
constexpr std::size_t MANY = 2000;

template <class Kind>
void walkIn(const ProofLattice& lattice, const WalkInput& input, const Judge& judge, Shared& shared) {
  using Scalar = typename Kind::Scalar;
  using Above = std::vector<Scalar>;
  const Tables<Kind> tables(input);
  std::vector<Above> open = {{}};
  const WalkShare& share = shared.settings.share;
  const std::size_t wanted = share.count > 1 ? share.parts : shared.settings.threads > 1 ? MANY : 0;
  // Level by level while the tree is narrow; then each thread takes one node after the other.
  std::size_t level = lattice.rank();
  while (level > 1 && open.size() < wanted && !open.empty() && !shared.isOver) {
    --level;
    std::vector<Above> next;
    Walker<Kind> walker(lattice, tables, judge, shared);
    for (const Above& above : open)
      walker.run(above, level, [&next](const Above& node) { next.push_back(node); });
    open = std::move(next);
  }
  if (share.rest > 0) shared.nodes = 0;
  const std::size_t step = share.count;
  std::atomic<std::size_t> taken = share.rest;
  const auto work = [&] {
    Walker<Kind> walker(lattice, tables, judge, shared);
    for (std::size_t i = taken.fetch_add(step); i < open.size() && !shared.isOver; i = taken.fetch_add(step))
      walker.run(open[i], 0, nullptr);
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < shared.settings.threads && open.size() > 1; ++i) threads.emplace_back(work);
  work();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

std::optional<WalkCount> collectSides(const ProofLattice& lattice, CutVectors& cuts, const Refuter& refuter,
                                      const WalkSettings& settings) {
  const WalkInput input(lattice, cuts);
  Tables<Long> tables(input);
  Shared shared{settings};
  const Judge judge = [](const IntegerVector&) { return true; };
  Walker<Long> walker(lattice, tables, judge, shared);
  walker.ask(refuter, input, cuts, tables);
  walker.run({}, 0, nullptr);
  if (shared.isOver) return std::nullopt;
  return WalkCount{shared.nodes, shared.points};
}

bool fitsDouble(const ProofLattice& lattice, const CutVectors& cuts) {
  return WalkInput(lattice, cuts).fitsShort();
}

std::optional<WalkCount> walk(const ProofLattice& lattice, const CutVectors& cuts, const Judge& judge,
                              const WalkSettings& settings) {
  const WalkInput input(lattice, cuts);
  Shared shared{settings};
  if (input.fitsShort())
    walkIn<Short>(lattice, input, judge, shared);
  else
    walkIn<Long>(lattice, input, judge, shared);
  if (shared.isOver) return std::nullopt;
  return WalkCount{shared.nodes, shared.points};
}

}  // namespace latbox::complete::proof
