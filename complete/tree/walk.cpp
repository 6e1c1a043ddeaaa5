#include "complete/tree/walk.h"

#include <cmath>
#include <limits>
#include <utility>

#include "complete/tree/walk_multiprecision.h"
#include "complete/tree/walk_steps.h"

namespace latbox::complete {

WalkPause walkOn_plain(WalkData<double, float>& data);
WalkPause walkOn_haswell(WalkData<double, float>& data);
WalkPause walkOn_skylake_avx512(WalkData<double, float>& data);

namespace {

using Kernel = WalkPause (*)(WalkData<double, float>&);

// The fastest one that this processor has.
Kernel fastestKernel() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw"))
    return walkOn_skylake_avx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2"))
    return walkOn_haswell;
#endif
  return walkOn_plain;
}

WalkPause goOn(WalkData<double, float>& data) {
  static const Kernel kernel = fastestKernel();
  return kernel(data);
}

WalkPause goOn(WalkData<Float, Float>& data) {
  return walkOn(data);
}

// On average, for an estimate: in wide boxes a single level has 10^9 of them.
constexpr std::size_t MOST_CHILDREN = 100;

// Away from 0 by more than the rounding of a few sums: a bound may only grow.
double widened(double value) {
  return value + std::fabs(value) * 0x1p-49 + 1e-290;
}

Float widened(const Float& value) {
  return value;
}

void assign(double& to, const Rational& value) {
  to = Float(value, 256).get_d();
}

void assign(Float& to, const Rational& value) {
  to = value;
}

void assign(double& to, double value) {
  to = value;
}

void assign(Float& to, double value) {
  to = value;
}

double toDouble(double value) {
  return value;
}

double toDouble(const Float& value) {
  return value.get_d();
}

Integer whole(double value) {
  return Integer(value);
}

Integer whole(const Float& value) {
  return Integer(value);
}

}  // namespace

template <class R>
Walk<R>::Walk(const CutTables<R>& tables, const std::vector<double>& caps)
    : tables_(tables),
      k_(tables.levels.size() - 1),
      levels_(k_ + 1),
      lambda_(k_ + PRODUCT_LANES),
      weights_((k_ + 1) * tables.levels[0].weights.size()) {
  const std::size_t width = tables.levels[0].weights.size();
  for (std::size_t t = 0; t <= k_; ++t) {
    const auto& from = tables.levels[t];
    Level& level = levels_[t];
    level.inverseNorm = from.inverseNorm;
    level.constant = from.constant;
    if (t < k_) level.step = from.products[t];
    level.most = widened(R(from.most + from.slip));
    level.least = widened(R(from.least + from.slip));
    // The point of the range that is nearest to the Gram-Schmidt vector's own centre.
    level.nearest = R(0);
    if (from.most < 0) level.nearest = from.most;
    if (-from.least > 0) level.nearest = -from.least;
    level.products = from.products.data();
    level.g = from.weights.data();
    level.w = weights_.data() + t * width;
    level.cap = tables.cap;
    if (t < caps.size() && caps[t] < level.cap) assign(level.cap, caps[t]);
  }
  data_.levels = levels_.data();
  data_.lambda = lambda_.data();
  data_.k = data_.level = k_;
  data_.width = width;
  data_.margin = tables.margin;
  pauseAt(NO_CEILING, BETWEEN_LOOKS);
}

template <class R>
void Walk<R>::start(const Piece& piece) {
  for (Level& level : levels_) level.closedUp = level.closedDown = true;
  data_.level = k_;
  leafLeft_ = false;
  if (!enterRoot()) return;
  leafLeft_ = k_ == 0 && piece.empty();
  if (k_ == 0) return;
  if (piece.empty()) {
    enter(data_, data_.level = k_ - 1);
  }
  for (std::size_t i = 0; i < std::min(piece.size(), k_); ++i)
    if (!resume(k_ - 1 - i, piece[i], i + 1 < piece.size())) break;
}

// The constant part of the cut. False: it refutes everything.
template <class R>
bool Walk<R>::enterRoot() {
  const auto& from = tables_.levels[k_];
  Level& level = levels_[k_];
  const R a = from.constant * from.inverseNorm;
  const Weights<R> zeros(data_.width);
  const R size = addScaled(level.w, zeros.data(), level.g, static_cast<Weight<R>>(a), data_.width);
  level.value = a * from.constant;
  return !(from.constant > level.most) && !(-from.constant > level.least) && !(level.value > level.cap) &&
         !(level.value > size + data_.margin);
}

template <class R>
bool Walk<R>::isNew() {
  return std::exchange(levels_[data_.level].isNew, false);
}

template <class R>
WalkPause Walk<R>::accept() {
  if (data_.level == 0) return WalkPause::LEAF;
  enter(data_, --data_.level);
  return WalkPause::CANDIDATE;
}

template <class R>
void Walk<R>::refuse(const R& least, const R& greatest) {
  Level& level = levels_[data_.level];
  if (least > greatest) level.closedUp = level.closedDown = true;
  if (!level.isOpen()) return;
  if (lambda_[data_.level] > greatest) {
    level.closedUp = true;
    level.down = std::min(level.down, greatest);
  }
  if (lambda_[data_.level] < least) {
    level.closedDown = true;
    level.up = std::max(level.up, least);
  }
}

template <class R>
void Walk<R>::pauseAt(std::size_t ceiling, unsigned long candidates) {
  data_.ceiling = ceiling;
  // The one before which it pauses is not looked at.
  data_.nextLook = std::min(BETWEEN_LOOKS, data_.sinceLook + candidates + 1);
}

// As the piece has left this level; with a choice, which was not refuted then, the cut is made anew. False:
// the choice is none that a walk would have made, and nothing is below it.
template <class R>
bool Walk<R>::resume(std::size_t t, const Choice& choice, bool hasChosen) {
  enter(data_, data_.level = t);
  Level& level = levels_[t];
  takeSides(level, choice);
  if (!hasChosen) return true;
  assign(lambda_[t], Rational(choice.chosen));
  const R product = level.base + lambda_[t] * level.step;
  if (product > level.most || -product > level.least) {
    lambda_[t] = 0;
    return false;
  }
  const R a = product * level.inverseNorm;
  level.value = levels_[t + 1].value + a * product;
  addScaled(level.w, levels_[t + 1].w, level.g, static_cast<Weight<R>>(a), data_.width);
  return true;
}

// Of a level that was just entered. A walk leaves both sides at or beside its range; whoever has written a
// piece by hand may begin one far beyond its end, or far behind the centre, from where it would never come.
template <class R>
void Walk<R>::takeSides(Level& level, const Choice& choice) const {
  level.closedUp = choice.closedUp;
  level.closedDown = choice.closedDown;
  const R first = roundDown(R((-level.least - level.base) / level.step)) - 2;
  const R last = roundDown(R((level.most - level.base) / level.step)) + 3;
  R up = level.up;
  R down = level.down;
  assign(up, Rational(choice.up));
  assign(down, Rational(choice.down));
  const bool isAll = !choice.closedUp && !choice.closedDown && choice.up == choice.down + 1;
  if (isAll && (up > last || down < first)) return;
  if (up <= last)
    level.up = std::max(up, first);
  else
    level.closedUp = true;
  if (down >= first)
    level.down = std::min(down, last);
  else
    level.closedDown = true;
}

template <class R>
WalkPause Walk<R>::next() {
  if (k_ == 0) {
    const bool leaf = leafLeft_;
    leafLeft_ = false;
    return leaf ? WalkPause::LEAF : WalkPause::END;
  }
  const WalkPause pause = goOn(data_);
  if (pause != WalkPause::LOOK) return pause;
  // This one was not looked at.
  nodes_ += data_.sinceLook - 1;
  data_.sinceLook = 0;
  return pause;
}

// The candidates that were looked at lie between the next ones, so that the last one is beside one of them.
template <class R>
void Walk<R>::takeBack() {
  if (k_ == 0) {
    leafLeft_ = true;
    return;
  }
  Level& level = levels_[0];
  if (lambda_[0] == level.up - 1) {
    level.up -= 1;
    level.closedUp = false;
  } else {
    level.down += 1;
    level.closedDown = false;
  }
}

template <class R>
Choice Walk<R>::choiceAt(std::size_t t) const {
  const Level& level = levels_[t];
  return {whole(lambda_[t]), whole(level.up), whole(level.down), level.closedUp, level.closedDown};
}

// Of a lattice of rank 0 the empty piece is the leaf, and a closed level, which it does not have, is what is
// left behind it.
template <class R>
Piece Walk<R>::rest(std::size_t least) const {
  Piece piece;
  if (k_ == 0 && !leafLeft_) piece.push_back({0, 1, -1, true, true});
  for (std::size_t t = k_; t-- > std::max(data_.level, least);) piece.push_back(choiceAt(t));
  if (!piece.empty()) piece.back().chosen = 0;
  return piece;
}

// A subtree below value v is taken to be as large as a ball of the radius that is left: (cap - v)^(t / 2).
// Candidates that were looked at already are those between the next ones.
template <class R>
double Walk<R>::openPart(std::size_t t, double& chosenPart) const {
  const Level& level = levels_[t];
  const double cap = toDouble(level.cap);
  const double before = toDouble(levels_[t + 1].value);
  const double length = toDouble(level.step);
  const auto weight = [&](double lambda) {
    const double p = toDouble(level.base) + lambda * length;
    const double left = cap - before - p * p * toDouble(level.inverseNorm);
    return left > 0 ? std::pow(left / cap, static_cast<double>(t) / 2) : 0;
  };
  double sum = 0;
  double open = 0;
  const double up = toDouble(level.up);
  const double down = toDouble(level.down);
  const double reach = std::sqrt(std::max(0.0, cap - before) / toDouble(level.inverseNorm)) / length;
  const double centre = -toDouble(level.base) / length;
  constexpr double MOST = 1000;
  const double width = std::min(reach, MOST);
  // Counted by steps: to a large number 1 cannot be added.
  const double first = std::ceil(centre - width);
  for (double step = 0; step <= 2 * MOST && first + step <= centre + width; ++step) {
    const double lambda = first + step;
    const double w = weight(lambda);
    sum += w;
    if ((lambda >= up && !level.closedUp) || (lambda <= down && !level.closedDown)) open += w;
  }
  const double chosen = weight(toDouble(lambda_[t]));
  chosenPart = sum > 0 ? std::min(1.0, chosen / sum) : 0;
  return sum > 0 ? open / sum : 0;
}

template <class R>
double Walk<R>::share() const {
  double left = 0;
  double part = 1;
  // Deeper down is too little to be seen.
  for (std::size_t t = k_; t-- > data_.level && part > 1e-9;) {
    double chosen = 0;
    left += part * openPart(t, chosen);
    part *= chosen;
  }
  return left;
}

template <class R>
bool Walk<R>::split(Piece& other, std::size_t least) {
  // Subtrees of a few levels are searched sooner than they are handed over.
  constexpr std::size_t LEAST_LEVELS = 4;
  for (std::size_t t = k_; t-- > data_.level + 1 && t >= std::max(least, LEAST_LEVELS);) {
    if (!levels_[t].isOpen()) continue;
    other.clear();
    for (std::size_t s = k_; s-- > t;) {
      other.push_back(choiceAt(s));
      if (s > t) other.back().closedUp = other.back().closedDown = true;
    }
    other.back().chosen = 0;
    levels_[t].closedUp = levels_[t].closedDown = true;
    return true;
  }
  return false;
}

// Enters the level below these choices, from the last level down, none of which is refuted.
template <class R>
bool Walk<R>::follow(const std::vector<R>& choices) {
  std::size_t t = k_;
  for (const R& choice : choices) {
    enter(data_, --t);
    lambda_[t] = choice;
    if (!choose(data_, t, true)) return false;
  }
  enter(data_, t - 1);
  return true;
}

template <class R>
double Walk<R>::sampledNodes(std::size_t most, std::mt19937_64& random, const IntegerVector& above) {
  data_.level = k_;
  if (!enterRoot()) return 0;
  double nodes = 0;
  double each = 1;
  std::vector<std::vector<R>> parents(1);
  for (const Integer& coefficient : above) assign(parents[0].emplace_back(), Rational(coefficient));
  for (std::size_t t = k_ - above.size(); t-- > 0 && !parents.empty();) {
    std::vector<std::vector<R>> children;
    std::size_t looked = 0;
    for (const std::vector<R>& parent : parents) {
      if (!follow(parent)) continue;
      while (levels_[t].isOpen()) {
        nodes += each;
        if (++looked > MOST_CHILDREN * most) return std::numeric_limits<double>::infinity();
        if (!step(data_, t)) continue;
        children.push_back(parent);
        children.back().push_back(lambda_[t]);
      }
    }
    if (children.size() > most) {
      each *= static_cast<double>(children.size()) / static_cast<double>(most);
      for (std::size_t i = 0; i < most; ++i)
        std::swap(children[i], children[i + random() % (children.size() - i)]);
      children.resize(most);
    }
    parents = std::move(children);
  }
  return nodes;
}

template <class R>
Piece Walk<R>::below(const IntegerVector& above) {
  for (Level& level : levels_) level.closedUp = level.closedDown = true;
  data_.level = k_;
  enterRoot();
  for (const Integer& coefficient : above) resume(data_.level - 1, {coefficient, 0, 0, true, true}, true);
  enter(data_, data_.level - 1);
  data_.level -= 1;
  Piece piece = rest();
  data_.level = k_;
  return piece;
}

template <class R>
unsigned long Walk<R>::takeNodes() {
  const unsigned long nodes = nodes_ + data_.sinceLook;
  nodes_ = 0;
  data_.sinceLook = 0;
  return nodes;
}

template class Walk<double>;
template class Walk<Float>;

}  // namespace latbox::complete
