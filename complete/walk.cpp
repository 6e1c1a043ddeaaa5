#include "complete/walk.h"

#include <cmath>

namespace latbox::complete {
namespace {

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

void assign(double& to, const Integer& value) {
  to = value.get_d();
}

void assign(Float& to, const Integer& value) {
  to = value;
}

}  // namespace

template <class R>
Walk<R>::Walk(const CutTables<R>& tables, std::vector<double> caps)
    : tables_(tables), k_(tables.levels.size() - 1) {
  states_.resize(k_ + 1);
  lambda_.resize(k_);
  for (State& state : states_) state.w.resize(tables_.levels[0].weights.size());
  for (std::size_t t = 0; t <= k_; ++t) {
    limits_.push_back({tables_.levels[t].most, tables_.levels[t].least});
    caps_.push_back(tables_.cap);
    if (t < caps.size() && caps[t] < caps_.back()) caps_.back() = caps[t];
  }
  level_ = k_;
}

template <class R>
void Walk<R>::start(const Piece& piece) {
  for (State& state : states_) state.closedUp = state.closedDown = true;
  level_ = k_;
  leafLeft_ = false;
  if (!enterRoot()) return;
  leafLeft_ = k_ == 0;
  if (k_ == 0) return;
  if (piece.empty()) return enter(level_ = k_ - 1);
  for (std::size_t i = 0; i < piece.size(); ++i) resume(k_ - 1 - i, piece[i], i + 1 < piece.size());
}

// The constant part of the cut. False: it refutes everything.
template <class R>
bool Walk<R>::enterRoot() {
  const auto& level = tables_.levels[k_];
  State& state = states_[k_];
  const R a = level.constant * level.inverseNorm;
  const Weights<R> zeros(level.weights.size());
  const R size = addScaled(state.w, zeros, level.weights, static_cast<Weight<R>>(a));
  state.value = a * level.constant;
  return !(magnitude(level.constant) > level.size + level.slip) && !(state.value > caps_[k_]) &&
         !(state.value > most(state.w, size) + tables_.margin);
}

template <class R>
void Walk<R>::enter(std::size_t t) {
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
}

// As the piece has left this level; with a choice, which was not refuted then, the cut is made anew.
template <class R>
void Walk<R>::resume(std::size_t t, const Choice& choice, bool hasChosen) {
  enter(level_ = t);
  State& state = states_[t];
  assign(state.up, choice.up);
  assign(state.down, choice.down);
  state.closedUp = choice.closedUp;
  state.closedDown = choice.closedDown;
  if (!hasChosen) return;
  assign(lambda_[t], choice.chosen);
  const auto& level = tables_.levels[t];
  const R product = state.base + lambda_[t] * level.products[t];
  const R a = product * level.inverseNorm;
  state.value = states_[t + 1].value + a * product;
  addScaled(state.w, states_[t + 1].w, level.weights, static_cast<Weight<R>>(a));
}

template <class R>
typename Walk<R>::Pause Walk<R>::next() {
  if (k_ == 0) {
    const bool leaf = leafLeft_;
    leafLeft_ = false;
    return leaf ? Pause::LEAF : Pause::END;
  }
  std::size_t t = level_;
  while (t < k_) {
    if (!states_[t].isOpen()) {
      ++t;
      continue;
    }
    if (++sinceLook_ == BETWEEN_LOOKS) {
      nodes_ += sinceLook_ - 1;
      sinceLook_ = 0;
      level_ = t;
      return Pause::LOOK;
    }
    if (!step(t)) continue;
    if (t == 0) {
      level_ = t;
      return Pause::LEAF;
    }
    enter(--t);
  }
  level_ = t;
  return Pause::END;
}

// Takes the candidate nearest to the centre. True: not refuted.
template <class R>
bool Walk<R>::step(std::size_t t) {
  State& state = states_[t];
  const bool up =
      state.closedDown || (!state.closedUp && state.up - state.centre <= state.centre - state.down);
  R& lambda = lambda_[t];
  lambda = up ? state.up : state.down;
  (up ? state.up : state.down) += up ? 1 : -1;
  return choose(t, up);
}

template <class R>
bool Walk<R>::choose(std::size_t t, bool up) {
  const auto& level = tables_.levels[t];
  State& state = states_[t];
  const State& parent = states_[t + 1];
  const R product = state.base + lambda_[t] * level.products[t];
  const bool above = product > limits_[t].most + level.slip;
  const bool below = -product > limits_[t].least + level.slip;
  if (above || below) {
    state.closedUp = state.closedUp || (above && up);
    state.closedDown = state.closedDown || (below && !up);
    return false;
  }
  const R a = product * level.inverseNorm;
  state.value = parent.value + a * product;
  if (state.value > caps_[t]) {
    refute(state, up, product);
    return false;
  }
  const R size = addScaled(state.w, parent.w, level.weights, static_cast<Weight<R>>(a));
  if (state.value > most(state.w, size) + tables_.margin) {
    refute(state, up, product);
    return false;
  }
  return true;
}

// The value grows in the direction in which g u has its sign, and so does W u with the same multiplier: what
// refutes this candidate refutes all further ones there. The other way the candidates are looked at one by
// one.
template <class R>
void Walk<R>::refute(State& state, bool up, const R& product) const {
  if (up && product >= 0) state.closedUp = true;
  if (!up && product <= 0) state.closedDown = true;
}

// The greatest W u in what the limits leave of the cube.
template <class R>
R Walk<R>::most(const Weights<R>& w, const R& size) const {
  R sum = size;
  for (const Shrunk& shrunk : shrunk_) {
    const R entry = w[shrunk.coordinate];
    sum -= entry > 0 ? R(entry * (1 - shrunk.high)) : R(-entry * (1 + shrunk.low));
  }
  return sum;
}

template <class R>
void Walk<R>::shrink(std::vector<Shrunk> ends) {
  shrunk_ = std::move(ends);
  for (std::size_t t = 0; t <= k_; ++t) {
    const auto& level = tables_.levels[t];
    R most = level.size;
    R least = level.size;
    for (const Shrunk& shrunk : shrunk_) {
      const R& entry = level.g[shrunk.coordinate];
      most -= entry > 0 ? R(entry * (1 - shrunk.high)) : R(-entry * (1 + shrunk.low));
      least -= entry > 0 ? R(entry * (1 + shrunk.low)) : R(-entry * (1 - shrunk.high));
    }
    limits_[t] = {std::min(level.most, most), std::min(level.least, least)};
  }
}

template <class R>
Choice Walk<R>::choiceAt(std::size_t t) const {
  const State& state = states_[t];
  return {whole(lambda_[t]), whole(state.up), whole(state.down), state.closedUp, state.closedDown};
}

template <class R>
Piece Walk<R>::rest() const {
  Piece piece;
  for (std::size_t t = k_; t-- > level_;) piece.push_back(choiceAt(t));
  if (!piece.empty()) piece.back().chosen = 0;
  return piece;
}

// A subtree below value v is taken to be as large as a ball of the radius that is left: (cap - v)^(t / 2).
// Candidates that were looked at already are those between the next ones.
template <class R>
double Walk<R>::openPart(std::size_t t, double& chosenPart) const {
  const auto& level = tables_.levels[t];
  const State& state = states_[t];
  const double cap = toDouble(caps_[t]);
  const double before = toDouble(states_[t + 1].value);
  const double step = toDouble(level.products[t]);
  const auto weight = [&](double lambda) {
    const double p = toDouble(state.base) + lambda * step;
    const double left = cap - before - p * p * toDouble(level.inverseNorm);
    return left > 0 ? std::pow(left / cap, static_cast<double>(t) / 2) : 0;
  };
  double sum = 0;
  double open = 0;
  const double up = toDouble(state.up);
  const double down = toDouble(state.down);
  const double reach = std::sqrt(std::max(0.0, cap - before) / toDouble(level.inverseNorm)) / step;
  const double centre = -toDouble(state.base) / step;
  constexpr double MOST = 1000;
  const double width = std::min(reach, MOST);
  for (double lambda = std::ceil(centre - width); lambda <= centre + width; ++lambda) {
    const double w = weight(lambda);
    sum += w;
    if ((lambda >= up && !state.closedUp) || (lambda <= down && !state.closedDown)) open += w;
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
  for (std::size_t t = k_; t-- > level_ && part > 1e-9;) {
    double chosen = 0;
    left += part * openPart(t, chosen);
    part *= chosen;
  }
  return left;
}

template <class R>
bool Walk<R>::split(Piece& other) {
  // Subtrees of a few levels are searched sooner than they are handed over.
  constexpr std::size_t LEAST_LEVELS = 4;
  for (std::size_t t = k_; t-- > level_ + 1 && t >= LEAST_LEVELS;) {
    if (!states_[t].isOpen()) continue;
    other.clear();
    for (std::size_t s = k_; s-- > t;) {
      other.push_back(choiceAt(s));
      if (s > t) other.back().closedUp = other.back().closedDown = true;
    }
    other.back().chosen = 0;
    states_[t].closedUp = states_[t].closedDown = true;
    return true;
  }
  return false;
}

// Enters the level below these choices, from the last level down, none of which is refuted.
template <class R>
bool Walk<R>::follow(const std::vector<R>& choices) {
  std::size_t t = k_;
  for (const R& choice : choices) {
    enter(--t);
    lambda_[t] = choice;
    if (!choose(t, true)) return false;
  }
  enter(t - 1);
  return true;
}

template <class R>
double Walk<R>::sampledNodes(std::size_t most, std::mt19937_64& random) {
  if (!enterRoot()) return 0;
  double nodes = 0;
  double each = 1;
  std::vector<std::vector<R>> parents(1);
  for (std::size_t t = k_; t-- > 0 && !parents.empty();) {
    std::vector<std::vector<R>> children;
    for (const std::vector<R>& parent : parents) {
      if (!follow(parent)) continue;
      while (states_[t].isOpen()) {
        nodes += each;
        if (!step(t)) continue;
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
  level_ = k_;
  return nodes;
}

template <class R>
unsigned long Walk<R>::takeNodes() {
  const unsigned long nodes = nodes_ + sinceLook_;
  nodes_ = 0;
  sinceLook_ = 0;
  return nodes;
}

template class Walk<double>;
template class Walk<Float>;

}  // namespace latbox::complete
