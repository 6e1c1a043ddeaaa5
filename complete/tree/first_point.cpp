#include "complete/tree/first_point.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "complete/lattice/kernel.h"
#include "complete/tree/leaf.h"
#include "complete/tree/parts.h"
#include "complete/tree/pass_tables.h"
#include "complete/tree/walk.h"

namespace latbox::complete {
namespace {

// Smaller trees are searched through before a pass has its basis.
constexpr std::size_t LEAST_RANK = 30;
constexpr double LEAST_TREE = 50;
// Passes may cost this part of the complete search.
constexpr double PART = 0.5;
// The first stage is worth so many candidates.
constexpr double FEW = 3e7;
// Points that the passes of another should bring; each stage takes a basis to be dearer than the one before
// did, and so leaves out less.
constexpr double POINTS = 2;
constexpr double DEARER = 2;
// A share from which on the complete search is as good.
constexpr double MOST_SHARE = 0.8;
// A pass whose tree is so much larger than estimated is left.
constexpr double PATIENCE = 10;

// What a basis costs, in candidates; measured at ranks 62 to 80.
double costOfBasis(std::size_t rank) {
  constexpr double AT_SEVENTY = 1.5e6;
  return AT_SEVENTY * std::pow(static_cast<double>(rank) / 70, 3);
}

// Of points that are spread evenly over the box.
PointLength lengthOf(const BoxLattice& lattice) {
  PointLength length;
  double variance = 0;
  for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
    // Of w + 1 values evenly between -1 and 1: the mean of their squares, and of the fourth powers.
    const double w = Integer(lattice.high[j] - lattice.low[j]).get_d();
    const double squares = (w + 2) / (3 * w);
    const double fourths = squares * (3 * w * w + 6 * w - 4) / (5 * w * w);
    length.mean += squares;
    variance += std::max(0.0, fourths - squares * squares);
  }
  length.deviation = std::sqrt(variance);
  return length;
}

// Whether with each point the one on the other side of the centre is a point.
bool isSymmetric(const BoxLattice& lattice) {
  for (std::size_t i = 0; i < lattice.equations.size(); ++i) {
    Integer sum = 0;
    for (std::size_t j = 0; j < lattice.coordinates(); ++j)
      sum += lattice.equations[i][j] * (lattice.low[j] + lattice.high[j]);
    if (sum != 2 * lattice.sides[i]) return false;
  }
  return true;
}

// The candidates of the first level on one side of the centre.
Piece halfTree(const Descent& descent) {
  constexpr double ROUNDING = 1e-6;
  const double centre = -descent.mu.back().back();
  Choice choice;
  choice.up = Integer(std::ceil(centre - ROUNDING));
  choice.down = choice.up - 1;
  choice.closedDown = true;
  return {choice};
}

// Rows of a new basis by these random numbers: points beside a point of the lattice are of it. Nothing: it
// cannot be made.
std::optional<IntegerMatrix> rowsOf(const BoxLattice& lattice, const ShortBasis& basis,
                                    std::mt19937_64& random) {
  const auto rows = newBasis(basis, random);
  if (!rows) return std::nullopt;
  auto result = inLattice(basis, *rows);
  if (!isInKernel(lattice.equations, result)) return std::nullopt;
  return result;
}

// The same each time. Nothing: it cannot be made, or is not worth it.
std::optional<IntegerMatrix> firstBasisOf(const BoxLattice& lattice) {
  if (lattice.rank() < LEAST_RANK) return std::nullopt;
  const auto basis = shortBasisOf(lattice);
  if (!basis) return std::nullopt;
  std::mt19937_64 random(1);
  return rowsOf(lattice, *basis, random);
}

}  // namespace

std::optional<BoxLattice> roughLatticeOf(const IntegerProgram& program) {
  auto lattice = unreducedLatticeOf(program);
  if (!lattice) return std::nullopt;
  const auto rows = firstBasisOf(*lattice);
  if (rows && takeBasis(*lattice, *rows)) return lattice;
  return boxLatticeOf(program);
}

Passes::Passes(BoxLattice lattice, unsigned long seed)
    : lattice_(std::move(lattice)),
      seed_(seed),
      length_(lengthOf(lattice_)),
      preparation_(costOfBasis(lattice_.rank())),
      isSymmetric_(isSymmetric(lattice_)) {
  if (reduce()) wholeTree_ = wholeTree();
}

// And brings the point near the centre. False: there are no passes.
bool Passes::reduce() {
  constexpr unsigned long FLOAT_BITS = 128;
  auto rows = firstBasisOf(lattice_);
  if (!rows) return false;
  lattice_.basis = std::move(*rows);
  const auto gso = roughGramSchmidtOf(lattice_, FLOAT_BITS);
  if (!gso) return false;
  centre(lattice_, *gso);
  basis_ = shortBasisOf(lattice_);
  return basis_.has_value();
}

double Passes::wholeTree() const {
  const Descent descent = passTablesOf(lattice_).descent;
  const PruningModel model(descent, length_, std::vector<double>(lattice_.rank(), 1.0));
  const std::vector<double> all(lattice_.rank(), descent.coordinates);
  const double nodes = treeOf(model.judged(all).nodes);
  return nodes < LEAST_TREE * preparation_ ? 0 : nodes;
}

bool Passes::hasStage(std::size_t stage) {
  while (stage >= stages_.size() && addStage()) {
  }
  return stage < stages_.size();
}

// The first two stages have the same caps, and the first is cut short. False: passes no longer pay.
bool Passes::addStage() {
  if (cost_ >= PART * wholeTree_) return false;
  const std::size_t number = stages_.size();
  auto pruning = number == 1 ? std::optional(stages_[0].pruning) : pruningOf(number);
  if (!pruning) return false;
  const double each = preparation_ + treeOf(pruning->nodes);
  double passes = std::ceil(POINTS / pruning->share);
  double most = PATIENCE * each;
  if (number == 0) {
    passes = std::clamp(std::floor(FEW / each), 1.0, passes);
    most = std::min(most, FEW);
  }
  cost_ += passes * std::min(each, most);
  stages_.push_back({std::move(*pruning), static_cast<unsigned long>(passes), most});
  return true;
}

// For a basis like those of the passes, which is the same for all seeds. Nothing: the complete search is as
// good.
std::optional<Pruning> Passes::pruningOf(std::size_t stage) const {
  const std::optional<BoxLattice> lattice = latticeOf({stage});
  if (!lattice) return std::nullopt;
  const double dearer = stage == 0 ? 1 : std::pow(DEARER, static_cast<double>(stage - 1));
  // Of a symmetric tree half is walked through, for all of its points.
  const double preparation = dearer * preparation_ * (isSymmetric_ ? 2 : 1);
  Pruning pruning = bestPruning(passTablesOf(*lattice).descent, length_, preparation);
  if (!(pruning.share > 0) || pruning.share > MOST_SHARE) return std::nullopt;
  return pruning;
}

// The lattice by another basis. Nothing: it cannot be made.
std::optional<BoxLattice> Passes::latticeOf(std::initializer_list<unsigned long> seeds) const {
  constexpr unsigned long LOW = 0xffffffff;
  std::vector<unsigned long> words;
  for (const unsigned long seed : seeds) words.insert(words.end(), {seed & LOW, seed >> 32});
  std::seed_seq sequence(words.begin(), words.end());
  std::mt19937_64 random(sequence);
  auto rows = rowsOf(lattice_, *basis_, random);
  if (!rows) return std::nullopt;
  BoxLattice other = lattice_;
  other.basis = std::move(*rows);
  return other;
}

// False: broken off. A pass whose basis cannot be made is made.
bool Passes::makePass(std::size_t stage, unsigned long pass, Visitor& visitor, SearchControl& control) const {
  const std::optional<BoxLattice> lattice = latticeOf({seed_, stage, pass});
  if (!lattice) return true;
  const PassTables tables = passTablesOf(*lattice);
  Walk<double> walk(tables.tables, stages_[stage].pruning.caps);
  Leaf leaf(*lattice);
  walk.start(isSymmetric_ ? halfTree(tables.descent) : Piece());
  for (double nodes = 0; nodes < stages_[stage].most && !control.stop;) {
    const WalkPause pause = walk.next();
    const unsigned long more = walk.takeNodes();
    nodes += static_cast<double>(more);
    control.nodes += more;
    if (pause == WalkPause::END) return true;
    const IntegerVector* z = pause == WalkPause::LEAF ? leaf.pointOf(walk.lambda()) : nullptr;
    if (!z) continue;
    const Next next = visitor.visit(*z);
    if (next == Next::STOP || next == Next::REFUSED) return false;
  }
  return !control.stop;
}

bool Passes::make(std::size_t stage, unsigned long begin, const std::function<void(unsigned long)>& tell,
                  Visitor& visitor, SearchControl& control) const {
  const auto makeOne = [&](unsigned long pass) { return makePass(stage, pass, visitor, control); };
  return goThrough({begin, stages_[stage].passes, makeOne, tell}, control);
}

}  // namespace latbox::complete
