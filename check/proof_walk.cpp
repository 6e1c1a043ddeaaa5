#include "check/proof_walk.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include "check/proof_kernels.h"

namespace latbox::check::proof {
namespace {

constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);
// Enough pieces for all threads to have work till the end, whatever the sizes of the pieces.
constexpr std::uint64_t MANY = 1000;
// Between two looks at what all walks together have met.
constexpr std::uint64_t STRIDE = 4096;

// The whole numbers below this one, and their sums below it, are exact in a double.
const mpz_class EXACT_BELOW = mpz_class(1) << 53;

// The cuts in whole numbers of any length, all conditions verified.

struct Cut {
  // g_c w_c.
  Integers scaled;
  // |g|.
  mpz_class size;
  // g U.
  mpz_class origin;
  // 2 g K_i for i > t, and for i = t.
  Integers products;
  mpz_class step;
};

struct CutLevel {
  mpz_class divisor;
  // The level's main vector, and its side vectors.
  std::vector<Cut> cuts;
};

struct Cuts {
  Cut constant;
  std::vector<CutLevel> levels;
};

class CutReader {
 public:
  CutReader(const Box& box, const Search& search) : box_(box), search_(search) {}

  Cuts result() const {
    const std::size_t rank = box_.basis.size();
    Cuts cuts;
    cuts.constant = cutOf(search_.constant.values, rank, search_.constant.line);
    for (std::size_t t = 0; t < rank; ++t) cuts.levels.push_back(levelOf(search_.levels[t], t));
    return cuts;
  }

 private:
  CutLevel levelOf(const Level& level, std::size_t t) const {
    if (level.number != t) throw Refused(level.line, "not the level " + std::to_string(t));
    if (level.divisor <= 0) throw Refused(level.line, "the divisor is not positive");
    CutLevel result{level.divisor, {cutOf(level.main, t, level.line)}};
    if (result.cuts[0].step <= 0)
      throw Refused(level.line, "the product with the level's own basis vector is not positive");
    for (const Numbers& side : level.sides) result.cuts.push_back(cutOf(side.values, t, side.line));
    return result;
  }

  Cut cutOf(const Integers& g, std::size_t t, std::size_t line) const {
    if (g.size() != box_.columns())
      throw Refused(line, std::to_string(g.size()) + " numbers, not " + std::to_string(box_.columns()));
    Cut cut;
    cut.products.resize(box_.basis.size());
    for (std::size_t i = 0; i < box_.basis.size(); ++i) {
      cut.products[i] = 2 * product(g, box_.basis[i]);
      if (i < t && cut.products[i] != 0)
        throw Refused(line, "not orthogonal to basis vector " + std::to_string(i));
    }
    if (t < box_.basis.size()) std::swap(cut.step, cut.products[t]);
    for (std::size_t c = 0; c < g.size(); ++c) {
      cut.scaled.push_back(g[c] * box_.width(c));
      cut.size += abs(cut.scaled[c]);
      cut.origin += g[c] * box_.centred(c);
    }
    return cut;
  }

  const Box& box_;
  const Search& search_;
};

// Bounds on all numbers of a walk, sums of sizes, so that no partial sum exceeds them either. Every lambda_i
// is within alpha_i - 1 .. beta_i + 1 where it is multiplied.

class Magnitudes {
 public:
  explicit Magnitudes(const Box& box) {
    for (std::size_t i = 0; i < box.alpha.size(); ++i)
      lambda_.push_back(std::max<mpz_class>(abs(box.alpha[i]), abs(box.beta[i])) + 1);
    for (std::size_t c = 0; c < box.columns(); ++c)
      value_.push_back(std::max<mpz_class>(abs(box.low[c]), abs(box.high[c])));
  }

  bool fit(const Box& box, const Cuts& cuts) {
    for (const mpz_class& lambda : lambda_) take(lambda);
    for (std::size_t c = 0; c < box.columns(); ++c) {
      mpz_class sum = abs(box.point[c]);
      for (std::size_t i = 0; i < lambda_.size(); ++i) sum += lambda_[i] * abs(box.basis[i][c]);
      take(sum);
      take(value_[c]);
    }
    mpz_class W = 1024 * cuts.constant.size;
    mpz_class V = 1024 * abs(cuts.constant.origin);
    for (std::size_t t = 0; t < cuts.levels.size(); ++t) {
      const CutLevel& level = cuts.levels[t];
      for (const Cut& cut : level.cuts) takeCut(cut, t);
      // From here on |p| <= |g|.
      const mpz_class& size = level.cuts[0].size;
      const mpz_class dividend = 2048 * size + level.divisor;
      take(dividend + 2 * level.divisor);
      const mpz_class multiplier = dividend / (2 * level.divisor) + 1;
      W += multiplier * size;
      V += multiplier * size;
    }
    take(W);
    take(V);
    return most_ < EXACT_BELOW;
  }

  // Of a form over the columns' values.
  mpz_class most(const Integers& coefficients, const mpz_class& constant) const {
    mpz_class sum = abs(constant);
    for (std::size_t c = 0; c < coefficients.size(); ++c) sum += abs(coefficients[c]) * value_[c];
    return sum;
  }

 private:
  void take(const mpz_class& value) { most_ = std::max(most_, value); }

  // Two values of p are added, and p = 0 is solved for lambda.
  void takeCut(const Cut& cut, std::size_t t) {
    mpz_class sum = abs(cut.origin) + abs(cut.step) * (lambda_[t] + 1);
    for (std::size_t i = 0; i < lambda_.size(); ++i) sum += lambda_[i] * abs(cut.products[i]);
    take(2 * sum);
    take(cut.size);
  }

  Integers lambda_;
  Integers value_;
  mpz_class most_;
};

// The same numbers as the walk takes them.

template <class Number>
Number numberOf(const mpz_class& value);
template <>
double numberOf<double>(const mpz_class& value) {
  return value.get_d();
}
template <>
mpz_class numberOf<mpz_class>(const mpz_class& value) {
  return value;
}

template <class Number>
Array<Number> arrayOf(const Integers& values) {
  Array<Number> array(padded(values.size()));
  for (std::size_t c = 0; c < values.size(); ++c) array[c] = numberOf<Number>(values[c]);
  return array;
}

template <class Number>
Number sizeOf(const Number& value) {
  return value < 0 ? Number(-value) : value;
}

// A row, a norm's linear part or a distance, over the columns' values.
template <class Number>
struct ColumnForm {
  Array<Number> coefficients;
  Number constant{};
  bool hasLow = false;
  bool hasHigh = false;
  Number low{};
  Number high{};

  Number at(const Array<Number>& values) const {
    return constant + product(coefficients.data(), values.data(), coefficients.size());
  }
};

// Whether the columns' values of a leaf, within their ends, are a point that counts.
template <class Number>
class LeafTest {
 public:
  LeafTest(const Box& box, const Condition& condition)
      : box_(box),
        goal_(condition.goal),
        T_(numberOf<Number>(condition.bounds.target)),
        S_(numberOf<Number>(condition.bounds.slack)) {
    for (const SystemRow& row : condition.system.rows) {
      rows_.push_back(formOf(row.form));
      ColumnForm<Number>& form = rows_.back();
      form.hasLow = row.range.low.has_value();
      form.hasHigh = row.range.high.has_value();
      if (form.hasLow) form.low = numberOf<Number>(*row.range.low);
      if (form.hasHigh) form.high = numberOf<Number>(*row.range.high);
    }
    linear_ = formOf(condition.norms.linear);
    for (const Form& distance : condition.norms.distances) distances_.push_back(formOf(distance));
  }

  bool counts(const Array<Number>& values) const {
    for (const ColumnForm<Number>& row : rows_) {
      const Number value = row.at(values);
      if ((row.hasLow && value < row.low) || (row.hasHigh && value > row.high)) return false;
    }
    if (goal_ == Goal::POINTS) return true;
    Number s{};
    for (const ColumnForm<Number>& distance : distances_) s += sizeOf(distance.at(values));
    const Number t = linear_.at(values) + s;
    return proof::counts(goal_, t, s, T_, S_);
  }

 private:
  ColumnForm<Number> formOf(const Form& form) const;

  const Box& box_;
  Goal goal_;
  std::vector<ColumnForm<Number>> rows_;
  ColumnForm<Number> linear_;
  std::vector<ColumnForm<Number>> distances_;
  Number T_;
  Number S_;
};

Integers overColumns(const Form& form, const Box& box) {
  Integers coefficients(box.columns());
  for (std::size_t c = 0; c < box.variables.size(); ++c)
    coefficients[c] = form.coefficients[box.variables[c]];
  return coefficients;
}

template <class Number>
ColumnForm<Number> LeafTest<Number>::formOf(const Form& form) const {
  ColumnForm<Number> result;
  result.coefficients = arrayOf<Number>(overColumns(form, box_));
  result.constant = numberOf<Number>(form.at(box_.z));
  return result;
}

// Whether all numbers of a LeafTest fit doubles.
bool leafFits(const Box& box, const Condition& condition, const Magnitudes& magnitudes) {
  mpz_class most = abs(condition.bounds.target) + abs(condition.bounds.slack);
  const auto take = [&most](const mpz_class& value) { most = std::max<mpz_class>(most, abs(value)); };
  const auto mostOf = [&](const Form& form) {
    return magnitudes.most(overColumns(form, box), form.at(box.z));
  };
  for (const SystemRow& row : condition.system.rows) {
    take(mostOf(row.form));
    if (row.range.low) take(*row.range.low);
    if (row.range.high) take(*row.range.high);
  }
  mpz_class norm = mostOf(condition.norms.linear);
  for (const Form& distance : condition.norms.distances) norm += mostOf(distance);
  take(norm);
  return most < EXACT_BELOW;
}

template <class Number>
struct TreeCut {
  explicit TreeCut(const Cut& cut)
      : scaled(arrayOf<Number>(cut.scaled)),
        products(arrayOf<Number>(cut.products)),
        size(numberOf<Number>(cut.size)),
        origin(numberOf<Number>(cut.origin)),
        step(numberOf<Number>(cut.step)) {}

  Array<Number> scaled;
  Array<Number> products;
  Number size;
  Number origin;
  Number step;
};

template <class Number>
struct TreeLevel {
  TreeLevel(const CutLevel& level, const mpz_class& least, const mpz_class& greatest)
      : main(level.cuts[0]),
        sides(level.cuts.begin() + 1, level.cuts.end()),
        divisor(numberOf<Number>(level.divisor)),
        twice(2 * divisor),
        alpha(numberOf<Number>(least)),
        beta(numberOf<Number>(greatest)) {}

  TreeCut<Number> main;
  std::vector<TreeCut<Number>> sides;
  Number divisor;
  Number twice;
  Number alpha;
  Number beta;
};

// All that does not change on a walk; threads share it.
template <class Number>
struct Tree {
  Tree(const Box& box, const Cuts& cuts, const Condition& condition, bool leafInDoubles)
      : rank(box.basis.size()),
        columns(padded(box.columns())),
        size(box.columns()),
        rootValue(numberOf<Number>(1024 * cuts.constant.origin)),
        point(arrayOf<Number>(box.point)),
        low(arrayOf<Number>(box.low)),
        high(arrayOf<Number>(box.high)),
        exactTest(box, condition) {
    Integers constant = cuts.constant.scaled;
    for (mpz_class& value : constant) value *= 1024;
    root = arrayOf<Number>(constant);
    for (std::size_t t = 0; t < rank; ++t) {
      levels.emplace_back(cuts.levels[t], box.alpha[t], box.beta[t]);
      basis.push_back(arrayOf<Number>(box.basis[t]));
    }
    if (leafInDoubles) test.emplace(box, condition);
  }

  std::size_t rank;
  // Padded, and as they are.
  std::size_t columns;
  std::size_t size;
  std::vector<TreeLevel<Number>> levels;
  // W_k, scaled by the widths, and V_k.
  Array<Number> root;
  Number rootValue;
  Array<Number> point;
  std::vector<Array<Number>> basis;
  Array<Number> low;
  Array<Number> high;
  std::optional<LeafTest<Number>> test;
  LeafTest<mpz_class> exactTest;
};

// What all walks together have met, and may meet.
class Budget {
 public:
  explicit Budget(const mpz_class& nodes)
      : limit_(nodes.fits_ulong_p() ? nodes.get_ui() : std::numeric_limits<std::uint64_t>::max()) {}

  std::uint64_t limit() const { return limit_; }
  void add(std::uint64_t nodes) {
    if (used_.fetch_add(nodes) + nodes > limit_) exceeded_ = true;
  }
  void exceed() { exceeded_ = true; }
  bool isExceeded() const { return exceeded_; }

 private:
  std::uint64_t limit_;
  std::atomic<std::uint64_t> used_ = 0;
  std::atomic<bool> exceeded_ = false;
};

// One walk. Below level `split` it walks only the pieces that `next` names, ascending; nodes at that level
// and above it are counted apart from those below.
template <class Number>
class Walk {
 public:
  Walk(const Tree<Number>& tree, Budget& budget, bool countsTop)
      : tree_(tree),
        budget_(budget),
        countsTop_(countsTop),
        W_((tree.rank + 1) * tree.columns),
        states_(tree.rank + 1),
        lambda_(padded(tree.rank)),
        values_(tree.columns) {
    std::copy(tree.root.begin(), tree.root.end(), W_.end() - static_cast<std::ptrdiff_t>(tree.columns));
    states_[tree.rank].V = tree.rootValue;
  }

  // `take(i)` says whether piece i is to be walked; `enough(i)`, whether the walk may end with i pieces met.
  template <class Take, class Enough>
  void run(std::size_t split, Take take, Enough enough) {
    if (tree_.rank == 0) {
      if (countsTop_) leaf();
      return;
    }
    std::uint64_t pieces = 0;
    std::size_t t = tree_.rank;
    open(--t);
    while (t < tree_.rank) {
      if (!advance(t, split == NOWHERE || t >= split)) {
        if (stopped_) return;
        ++t;
        continue;
      }
      if (t == split) {
        const bool mine = take(pieces++);
        if (enough(pieces)) return;
        if (!mine) continue;
      }
      if (t == 0)
        leaf();
      else
        open(--t);
    }
    settle();
  }

  // Requires: run has ended.
  Counts counts() const { return {(countsTop_ ? top_ : 0) + below_, points_}; }
  bool isStopped() const { return stopped_; }

 private:
  struct State {
    Number V;
    Number base;
    Number down;
    Number up;
    // Of the side vectors, as `base` of the main one.
    std::vector<Number> sideBases;
  };

  Number baseOf(const TreeCut<Number>& cut) const {
    return cut.origin + product(cut.products.data(), lambda_.data(), lambda_.size());
  }

  // Prepares the children, of level t, of the node that has been chosen.
  void open(std::size_t t) {
    const TreeLevel<Number>& level = tree_.levels[t];
    State& state = states_[t];
    state.base = baseOf(level.main);
    state.sideBases.resize(level.sides.size());
    for (std::size_t i = 0; i < level.sides.size(); ++i) state.sideBases[i] = baseOf(level.sides[i]);
    state.down = floorQuotient(-state.base, level.main.step);
    state.up = state.down + 1;
    if (state.down > level.beta) state.down = level.beta;
    if (state.up < level.alpha) state.up = level.alpha;
  }

  // Takes candidates of level t until one is not refuted; false if there are no more, or the walk is stopped.
  bool advance(std::size_t t, bool isTop) {
    const TreeLevel<Number>& level = tree_.levels[t];
    State& state = states_[t];
    for (;;) {
      const bool down = state.down >= level.alpha;
      const bool up = state.up <= level.beta;
      if (!down && !up) return false;
      Number& lambda = lambda_[t];
      if (up && (!down || goesUp(state, level.main.step))) {
        lambda = state.up;
        state.up += 1;
      } else {
        lambda = state.down;
        state.down -= 1;
      }
      ++(isTop ? top_ : below_);
      if (--untilLook_ == 0 && !look()) return false;
      if (survives(t, level, state, lambda)) return true;
    }
  }

  static bool goesUp(const State& state, const Number& step) {
    const Number above = state.base + state.up * step;
    const Number below = state.base + state.down * step;
    return above + below <= 0;
  }

  bool survives(std::size_t t, const TreeLevel<Number>& level, State& state, const Number& lambda) {
    const Number p = state.base + lambda * level.main.step;
    if (p > level.main.size) {
      closeUp(state, level);
      return false;
    }
    if (p < -level.main.size) {
      closeDown(state, level);
      return false;
    }
    const Number a = floorQuotient(2048 * p + level.divisor, level.twice);
    Number* const W = W_.data() + t * tree_.columns;
    const Number size = addMultiple(W, W + tree_.columns, level.main.scaled.data(), a, tree_.columns);
    state.V = states_[t + 1].V + a * p;
    if (sizeOf(state.V) > size) {
      close(state, level, state.V < 0 ? Number(-a) : a);
      return false;
    }
    for (std::size_t i = 0; i < level.sides.size(); ++i) {
      const TreeCut<Number>& side = level.sides[i];
      const Number q = state.sideBases[i] + lambda * side.step;
      if (sizeOf(q) <= side.size) continue;
      close(state, level, q < 0 ? Number(-side.step) : side.step);
      return false;
    }
    return true;
  }

  static void closeUp(State& state, const TreeLevel<Number>& level) { state.up = level.beta + 1; }
  static void closeDown(State& state, const TreeLevel<Number>& level) { state.down = level.alpha - 1; }
  static void close(State& state, const TreeLevel<Number>& level, const Number& x) {
    if (x >= 0) closeUp(state, level);
    if (x <= 0) closeDown(state, level);
  }

  void leaf() {
    values_ = tree_.point;
    for (std::size_t i = 0; i < tree_.rank; ++i)
      addMultiple(values_.data(), values_.data(), tree_.basis[i].data(), lambda_[i], tree_.columns);
    for (std::size_t c = 0; c < tree_.size; ++c)
      if (values_[c] < tree_.low[c] || values_[c] > tree_.high[c]) return;
    if (tree_.test ? tree_.test->counts(values_) : countsExactly()) ++points_;
  }

  bool countsExactly() const {
    Array<mpz_class> values(values_.begin(), values_.end());
    return tree_.exactTest.counts(values);
  }

  // False: the walk is to stop.
  bool look() {
    settle();
    untilLook_ = STRIDE;
    if (top_ + below_ > budget_.limit()) budget_.exceed();
    stopped_ = budget_.isExceeded();
    return !stopped_;
  }

  void settle() {
    const std::uint64_t nodes = counts().nodes;
    budget_.add(nodes - settled_);
    settled_ = nodes;
  }

  const Tree<Number>& tree_;
  Budget& budget_;
  bool countsTop_;
  // W_t for each level, scaled by the widths.
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

template <class Number>
class Walkers {
 public:
  Walkers(const Tree<Number>& tree, const Plan& plan, const mpz_class& nodes)
      : tree_(tree), plan_(plan), nodes_(nodes), budget_(nodes) {}

  // Nothing if there are more nodes than there may be.
  std::optional<Counts> result() {
    const bool isDivided = plan_.threads > 1 || plan_.parts > 1;
    const std::size_t split = isDivided ? splitLevel() : NOWHERE;
    const std::size_t threads = split == NOWHERE ? 1 : plan_.threads;
    next_ = plan_.part - 1;
    std::vector<Counts> counts(threads);
    std::vector<std::exception_ptr> failures(threads);
    std::vector<std::thread> others;
    for (std::size_t i = 1; i < threads; ++i)
      others.emplace_back([this, i, split, &counts, &failures] { walk(i, split, counts[i], failures[i]); });
    walk(0, split, counts[0], failures[0]);
    for (std::thread& other : others) other.join();
    for (const std::exception_ptr& failure : failures)
      if (failure) std::rethrow_exception(failure);
    if (budget_.isExceeded()) return std::nullopt;
    Counts sum;
    for (const Counts& part : counts) sum = {sum.nodes + part.nodes, sum.points + part.points};
    return sum;
  }

 private:
  // The highest level with MANY nodes.
  std::size_t splitLevel() const {
    for (std::size_t t = tree_.rank; t-- > 0;) {
      Budget budget(nodes_);
      Walk<Number> trial(tree_, budget, true);
      std::uint64_t met = 0;
      trial.run(
          t, [](std::uint64_t) { return false; },
          [&met](std::uint64_t pieces) { return (met = pieces) == MANY; });
      if (met == MANY) return t;
      if (trial.isStopped()) return NOWHERE;
    }
    return NOWHERE;
  }

  void walk(std::size_t thread, std::size_t split, Counts& counts, std::exception_ptr& failure) {
    try {
      const bool isFirst = thread == 0 && plan_.part == 1;
      if (split == NOWHERE && !isFirst) return;
      Walk<Number> walk(tree_, budget_, isFirst);
      std::uint64_t mine = next_.fetch_add(plan_.parts);
      const auto take = [&](std::uint64_t piece) {
        if (piece != mine) return false;
        mine = next_.fetch_add(plan_.parts);
        return true;
      };
      walk.run(split, take, [](std::uint64_t) { return false; });
      counts = walk.counts();
    } catch (...) {
      failure = std::current_exception();
      budget_.exceed();
    }
  }

  const Tree<Number>& tree_;
  const Plan& plan_;
  const mpz_class& nodes_;
  Budget budget_;
  // The first piece of this part that nobody walks yet.
  std::atomic<std::uint64_t> next_ = 0;
};

template <class Number>
Counts walked(const Tree<Number>& tree, const Search& search, const Plan& plan) {
  if (const auto counts = Walkers<Number>(tree, plan, search.nodes).result()) return *counts;
  throw Refused(search.endLine, "the walk has more than " + search.nodes.get_str() + " nodes");
}

}  // namespace

Counts walk(const Box& box, const Search& search, const Condition& condition, const Plan& plan) {
  const Cuts cuts = CutReader(box, search).result();
  if (box.isEmpty || plan.part == 0) return {};
  Magnitudes magnitudes(box);
  if (plan.exact || !magnitudes.fit(box, cuts))
    return walked(Tree<mpz_class>(box, cuts, condition, true), search, plan);
  const bool leaf = leafFits(box, condition, magnitudes);
  return walked(Tree<double>(box, cuts, condition, leaf), search, plan);
}

}  // namespace latbox::check::proof
