#include "check/proof/walk.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include "check/proof/kernels.h"

namespace latbox::check::proof {
namespace {

constexpr std::size_t NOWHERE = std::numeric_limits<std::size_t>::max();
// Enough pieces for all threads to have work till the end, whatever the sizes of the pieces.
constexpr std::uint64_t MANY = 1000;
// Between two looks at what all walks together have met.
constexpr std::uint64_t STRIDE = 4096;

template <class Number>
struct Cut {
  // g_c w_c, for all columns, and 2 g K_i for i > t, otherwise 0.
  Array<Number> scaled;
  Array<Number> products;
  // |g|, g U, and 2 g K_t.
  Number size{};
  Number origin{};
  Number step{};
};

template <class Number>
struct CutLevel {
  Number divisor;
  Number alpha;
  Number beta;
  // The main vector, and behind it the side vectors.
  std::vector<Cut<Number>> cuts;
};

// All that does not change on a walk; threads share it.
template <class Number>
struct Tree {
  // 1024 times the constant, with W_k and V_k.
  Cut<Number> root;
  std::vector<CutLevel<Number>> levels;
  // x0, and the K_i.
  Array<Number> point;
  std::vector<Array<Number>> basis;
  Array<Number> low;
  Array<Number> high;
};

template <class To, class From>
Array<To> arrayOf(const From& values) {
  Array<To> array((values.size() + BLOCK - 1) / BLOCK * BLOCK);
  for (std::size_t c = 0; c < values.size(); ++c) {
    if constexpr (std::is_same_v<To, double>)
      array[c] = values[c].get_d();
    else
      array[c] = values[c];
  }
  return array;
}

// Reads the cuts, and verifies their conditions.
class TreeReader {
 public:
  TreeReader(const Box& box, const Search& search) : box_(box), search_(search) {}

  Tree<mpz_class> result() const {
    Numbers constant = search_.constant;
    for (mpz_class& value : constant.values) value *= 1024;
    const std::size_t rank = box_.basis.size();
    Tree<mpz_class> tree{cutOf(constant, rank), {}, arrayOf<mpz_class>(box_.point), {}, {}, {}};
    for (std::size_t t = 0; t < rank; ++t) {
      if (!box_.isEmpty) tree.levels.push_back({search_.levels[t].divisor, box_.alpha[t], box_.beta[t], {}});
      std::vector<Cut<mpz_class>> cuts = cutsOf(search_.levels[t], t);
      if (!box_.isEmpty) tree.levels[t].cuts = std::move(cuts);
      tree.basis.push_back(arrayOf<mpz_class>(box_.basis[t]));
    }
    tree.low = arrayOf<mpz_class>(box_.low);
    tree.high = arrayOf<mpz_class>(box_.high);
    return tree;
  }

 private:
  std::vector<Cut<mpz_class>> cutsOf(const Level& level, std::size_t t) const {
    const auto require = [&](bool holds, const char* what) {
      if (!holds) throw Refused(level.main.line, what);
    };
    require(level.number == t, "not the level whose turn it is");
    require(level.divisor > 0, "the divisor is not positive");
    std::vector<Cut<mpz_class>> cuts{cutOf(level.main, t)};
    require(cuts[0].step > 0, "the product with the level's own basis vector is not positive");
    for (const Numbers& side : level.sides) cuts.push_back(cutOf(side, t));
    return cuts;
  }

  Cut<mpz_class> cutOf(const Numbers& line, std::size_t t) const {
    const Integers& g = line.values;
    if (g.size() != box_.columns())
      throw Refused(line.line, std::to_string(g.size()) + " numbers, not " + std::to_string(box_.columns()));
    Integers products;
    for (std::size_t i = 0; i < box_.basis.size(); ++i) {
      products.push_back(2 * product(g, box_.basis[i]));
      if (i < t && products[i] != 0)
        throw Refused(line.line, "not orthogonal to basis vector " + std::to_string(i));
    }
    Cut<mpz_class> cut;
    if (t < products.size()) std::swap(cut.step, products[t]);
    cut.products = arrayOf<mpz_class>(products);
    Integers scaled;
    for (std::size_t c = 0; c < g.size(); ++c) {
      scaled.push_back(g[c] * (box_.high[c] - box_.low[c]));
      cut.size += abs(scaled[c]);
      cut.origin += g[c] * (2 * box_.point[c] - box_.low[c] - box_.high[c]);
    }
    cut.scaled = arrayOf<mpz_class>(scaled);
    return cut;
  }

  const Box& box_;
  const Search& search_;
};

// Whether all numbers of a walk fit doubles. Sums are taken of sizes, so that no part of a sum exceeds them
// either; a lambda_i that is multiplied lies within alpha_i .. beta_i.
bool fitsDoubles(const Tree<mpz_class>& tree) {
  mpz_class most;
  const auto take = [&most](const mpz_class& value) { most = std::max<mpz_class>(most, abs(value)); };
  Integers lambda;
  for (const CutLevel<mpz_class>& level : tree.levels) {
    lambda.push_back(std::max<mpz_class>(abs(level.alpha), abs(level.beta)) + 1);
    take(lambda.back());
  }
  for (std::size_t c = 0; c < tree.point.size(); ++c) {
    mpz_class sum = abs(tree.point[c]);
    for (std::size_t i = 0; i < lambda.size(); ++i) sum += lambda[i] * abs(tree.basis[i][c]);
    take(sum);
    take(tree.low[c]);
    take(tree.high[c]);
  }
  mpz_class W = tree.root.size;
  mpz_class V = abs(tree.root.origin);
  for (std::size_t t = 0; t < lambda.size(); ++t) {
    const CutLevel<mpz_class>& level = tree.levels[t];
    for (const Cut<mpz_class>& cut : level.cuts) {
      mpz_class sum = abs(cut.origin) + abs(cut.step) * (lambda[t] + 1);
      for (std::size_t i = 0; i < lambda.size(); ++i) sum += lambda[i] * abs(cut.products[i]);
      // Two values of p are added.
      take(2 * sum);
      take(cut.size);
    }
    // Behind the first test |p| <= |g|.
    const mpz_class dividend = 2048 * level.cuts[0].size + level.divisor;
    take(dividend + 2 * level.divisor);
    const mpz_class term = (dividend / (2 * level.divisor) + 1) * level.cuts[0].size;
    W += term;
    V += term;
  }
  take(W);
  take(V);
  return most < mpz_class(1) << 53;
}

// Requires: fitsDoubles.
Tree<double> inDoubles(const Tree<mpz_class>& tree) {
  const auto converted = [](const Cut<mpz_class>& cut) {
    return Cut<double>{arrayOf<double>(cut.scaled), arrayOf<double>(cut.products), cut.size.get_d(),
                       cut.origin.get_d(), cut.step.get_d()};
  };
  Tree<double> result{converted(tree.root),        {},
                      arrayOf<double>(tree.point), {},
                      arrayOf<double>(tree.low),   arrayOf<double>(tree.high)};
  for (const CutLevel<mpz_class>& level : tree.levels) {
    result.levels.push_back({level.divisor.get_d(), level.alpha.get_d(), level.beta.get_d(), {}});
    for (const Cut<mpz_class>& cut : level.cuts) result.levels.back().cuts.push_back(converted(cut));
  }
  for (const Array<mpz_class>& vector : tree.basis) result.basis.push_back(arrayOf<double>(vector));
  return result;
}

Rational rationalOf(double value) {
  return static_cast<long>(value);
}
Rational rationalOf(const mpz_class& value) {
  return Rational(mpq_class(value));
}

// Whether a leaf is a point that counts.
class Leaves {
 public:
  Leaves(const Program& program, const Box& box, Goal goal, const Norms& verdict)
      : program_(program), box_(box), goal_(goal), verdict_(verdict) {
    for (std::size_t j = 0; j < program.variables(); ++j) {
      units_.push_back(1 / powerOfTen(program.dx[j]));
      fixed_.push_back(rationalOf(box.fixed[j]) * units_[j]);
    }
  }

  template <class Number>
  bool count(const Array<Number>& values) const {
    std::vector<Rational> x = fixed_;
    for (std::size_t c = 0; c < box_.variables.size(); ++c)
      x[box_.variables[c]] = rationalOf(values[c]) * units_[box_.variables[c]];
    const auto norms = normsOf(program_, x);
    return norms && counts(goal_, *norms, verdict_);
  }

 private:
  const Program& program_;
  const Box& box_;
  Goal goal_;
  const Norms& verdict_;
  std::vector<Rational> units_;
  std::vector<Rational> fixed_;
};

// What all walks together have met, and may meet.
class Budget {
 public:
  explicit Budget(const mpz_class& nodes)
      : limit_(nodes.fits_ulong_p() ? nodes.get_ui() : std::numeric_limits<std::uint64_t>::max()) {}

  // `alone` is what one walk has met, counted or not.
  void add(std::uint64_t nodes, std::uint64_t alone) {
    if (used_.fetch_add(nodes) + nodes > limit_ || alone > limit_) exceeded_ = true;
  }
  void exceed() { exceeded_ = true; }
  bool isExceeded() const { return exceeded_; }

 private:
  std::uint64_t limit_;
  std::atomic<std::uint64_t> used_ = 0;
  std::atomic<bool> exceeded_ = false;
};

// One walk. Nodes of level `split` and above are counted apart from those below, or not at all.
template <class Number>
class Walk {
 public:
  Walk(const Tree<Number>& tree, const Leaves& leaves, Budget& budget, bool countsTop)
      : tree_(tree),
        leaves_(leaves),
        budget_(budget),
        countsTop_(countsTop),
        rank_(tree.levels.size()),
        columns_(tree.point.size()),
        W_(rank_ * columns_),
        states_(rank_ + 1),
        lambda_(tree.root.products.size()) {
    W_.insert(W_.end(), tree.root.scaled.begin(), tree.root.scaled.end());
    states_[rank_].V = tree.root.origin;
  }

  // `take(i)` says of the i-th node of level `split` whether the walk goes on below it, and `enough(i)`
  // whether it may end behind it. It ends also when the budget is exceeded.
  template <class Take, class Enough>
  void run(std::size_t split, Take take, Enough enough) {
    std::uint64_t pieces = 0;
    std::size_t t = rank_;
    if (rank_ > 0)
      open(--t);
    else if (countsTop_)
      leaf();
    while (t < rank_ && !stopped_) {
      if (!advance(t, split == NOWHERE || t >= split ? top_ : below_)) {
        ++t;
      } else if (t == split && !take(pieces++)) {
        if (enough(pieces)) return;
      } else if (t == 0) {
        leaf();
      } else {
        open(--t);
      }
    }
    settle();
  }

  Counts counts() const { return {(countsTop_ ? top_ : 0) + below_, points_}; }

 private:
  struct State {
    Number V;
    Number down;
    Number up;
    // g U and the products with what has been chosen, for each cut.
    std::vector<Number> bases;
  };

  // Prepares the children, of level t, of the node that has been chosen.
  void open(std::size_t t) {
    const CutLevel<Number>& level = tree_.levels[t];
    State& state = states_[t];
    state.bases.resize(level.cuts.size());
    for (std::size_t i = 0; i < level.cuts.size(); ++i)
      state.bases[i] =
          level.cuts[i].origin + product(level.cuts[i].products.data(), lambda_.data(), lambda_.size());
    state.down = floorQuotient(-state.bases[0], level.cuts[0].step);
    state.up = state.down + 1;
    if (state.down > level.beta) state.down = level.beta;
    if (state.up < level.alpha) state.up = level.alpha;
  }

  // Takes candidates of level t until one is not refuted; false if there are no more, or the walk is stopped.
  bool advance(std::size_t t, std::uint64_t& count) {
    const CutLevel<Number>& level = tree_.levels[t];
    State& state = states_[t];
    for (;;) {
      const bool down = state.down >= level.alpha;
      const bool up = state.up <= level.beta;
      if (!down && !up) return false;
      Number& lambda = lambda_[t];
      if (up && (!down || goesUp(state, level.cuts[0].step))) {
        lambda = state.up;
        state.up += 1;
      } else {
        lambda = state.down;
        state.down -= 1;
      }
      ++count;
      if (--untilLook_ == 0) settle();
      if (stopped_) return false;
      if (survives(t, level, state, lambda)) return true;
    }
  }

  // p(up) + p(down) <= 0.
  static bool goesUp(const State& state, const Number& step) {
    const Number above = state.bases[0] + state.up * step;
    const Number below = state.bases[0] + state.down * step;
    return above + below <= 0;
  }

  bool survives(std::size_t t, const CutLevel<Number>& level, State& state, const Number& lambda) {
    const Cut<Number>& main = level.cuts[0];
    const Number p = state.bases[0] + lambda * main.step;
    if (p > main.size || -p > main.size) return refute(level, state, p, 1);
    const Number dividend = 2048 * p + level.divisor;
    const Number divisor = 2 * level.divisor;
    const Number a = floorQuotient(dividend, divisor);
    Number* const W = W_.data() + t * columns_;
    const Number size = addMultiple(W, W + columns_, main.scaled.data(), a, columns_);
    state.V = states_[t + 1].V + a * p;
    if (state.V > size || -state.V > size) return refute(level, state, state.V, a);
    for (std::size_t i = 1; i < level.cuts.size(); ++i) {
      const Number q = state.bases[i] + lambda * level.cuts[i].step;
      if (q > level.cuts[i].size || -q > level.cuts[i].size)
        return refute(level, state, q, level.cuts[i].step);
    }
    return true;
  }

  // Closes the directions in which W u, now `value`, moves further out: by a positive multiple of `slope`
  // with each step upwards.
  static bool refute(const CutLevel<Number>& level, State& state, const Number& value, const Number& slope) {
    if (value > 0 ? slope >= 0 : slope <= 0) state.up = level.beta + 1;
    if (value > 0 ? slope <= 0 : slope >= 0) state.down = level.alpha - 1;
    return false;
  }

  void leaf() {
    values_ = tree_.point;
    for (std::size_t i = 0; i < rank_; ++i)
      addMultiple(values_.data(), values_.data(), tree_.basis[i].data(), lambda_[i], columns_);
    for (std::size_t c = 0; c < columns_; ++c)
      if (values_[c] < tree_.low[c] || values_[c] > tree_.high[c]) return;
    if (leaves_.count(values_)) ++points_;
  }

  void settle() {
    untilLook_ = STRIDE;
    const std::uint64_t nodes = counts().nodes;
    budget_.add(nodes - settled_, top_ + below_);
    settled_ = nodes;
    stopped_ = budget_.isExceeded();
  }

  const Tree<Number>& tree_;
  const Leaves& leaves_;
  Budget& budget_;
  bool countsTop_;
  std::size_t rank_;
  std::size_t columns_;
  // W_t of each level, scaled by the widths.
  Array<Number> W_;
  std::vector<State> states_;
  Array<Number> lambda_;
  Array<Number> values_;
  std::uint64_t top_ = 0;
  std::uint64_t below_ = 0;
  std::uint64_t points_ = 0;
  std::uint64_t settled_ = 0;
  std::uint64_t untilLook_ = STRIDE;
  bool stopped_ = false;
};

// The threads of one run.
template <class Number>
class Team {
 public:
  Team(const Tree<Number>& tree, const Leaves& leaves, const Plan& plan, const mpz_class& nodes)
      : tree_(tree), leaves_(leaves), plan_(plan), nodes_(nodes), budget_(nodes), next_(plan.part - 1) {}

  // Nothing if there are more nodes than there may be.
  std::optional<Counts> result() {
    if (plan_.threads > 1 || plan_.parts > 1) split_ = splitLevel();
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < plan_.threads && split_ != NOWHERE; ++i)
      others.emplace_back([this] { walk(false); });
    // If it is not divided, the first part is the whole.
    if (split_ != NOWHERE || plan_.part == 1) walk(plan_.part == 1);
    others.clear();
    if (failure_) std::rethrow_exception(failure_);
    return budget_.isExceeded() ? std::nullopt : std::optional(Counts{counted_, points_});
  }

 private:
  // The highest level with MANY nodes.
  std::size_t splitLevel() const {
    std::uint64_t met = 0;
    for (std::size_t t = tree_.levels.size(); t-- > 0;) {
      Budget budget(nodes_);
      Walk<Number> trial(tree_, leaves_, budget, true);
      trial.run(
          t, [](std::uint64_t) { return false; }, [&](std::uint64_t i) { return (met = i) == MANY; });
      if (met == MANY) return t;
    }
    return NOWHERE;
  }

  void walk(bool countsTop) {
    try {
      Walk<Number> walk(tree_, leaves_, budget_, countsTop);
      std::uint64_t mine = next_.fetch_add(plan_.parts);
      const auto take = [&](std::uint64_t piece) {
        if (piece != mine) return false;
        mine = next_.fetch_add(plan_.parts);
        return true;
      };
      walk.run(split_, take, [](std::uint64_t) { return false; });
      counted_ += walk.counts().nodes;
      points_ += walk.counts().points;
    } catch (...) {
      budget_.exceed();
      if (!failed_.exchange(true)) failure_ = std::current_exception();
    }
  }

  const Tree<Number>& tree_;
  const Leaves& leaves_;
  const Plan& plan_;
  const mpz_class& nodes_;
  Budget budget_;
  std::size_t split_ = NOWHERE;
  // The first piece of this part that nobody walks yet.
  std::atomic<std::uint64_t> next_;
  std::atomic<std::uint64_t> counted_ = 0;
  std::atomic<std::uint64_t> points_ = 0;
  std::atomic<bool> failed_ = false;
  std::exception_ptr failure_;
};

}  // namespace

Counts walk(const Program& program, const Box& box, const Search& search, const Norms& verdict,
            const Plan& plan) {
  const Tree<mpz_class> tree = TreeReader(box, search).result();
  if (box.isEmpty || plan.part == 0) return {};
  const Leaves leaves(program, box, search.goal, verdict);
  const auto counts = plan.exact || !fitsDoubles(tree)
                          ? Team<mpz_class>(tree, leaves, plan, search.nodes).result()
                          : Team<double>(inDoubles(tree), leaves, plan, search.nodes).result();
  if (!counts) throw Refused(search.endLine, "the walk has more than " + search.nodes.get_str() + " nodes");
  return *counts;
}

}  // namespace latbox::check::proof
