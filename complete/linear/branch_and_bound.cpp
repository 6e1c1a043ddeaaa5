#include "complete/linear/branch_and_bound.h"

#include <algorithm>
#include <cmath>

namespace latbox::complete {
namespace {

// A value this near to a whole one may be it.
constexpr double WHOLE = 1e-6;
// Numbers of a dictionary: steps of milliseconds.
constexpr std::size_t MOST_ENTRIES = 2'000'000;
constexpr int ROUNDS = 5;

// False: no point, by proof.
bool narrow(WordProgram& program) {
  for (int round = 0; round < ROUNDS; ++round) {
    Domains domains(program);
    if (!domains.propagate()) return false;
    program.box = domains.box();
    strengthen(program);
  }
  return true;
}

}  // namespace

BranchAndBound::Search::Search(WordProgram words, const std::vector<double>& goal, unsigned seed)
    : program(std::move(words)), domains(program), relaxation(program, goal, seed) {}

bool BranchAndBound::isPossible(const IntegerProgram& program) {
  const std::optional<WordProgram> words = wordProgramOf(program);
  return words && BoxRelaxation::sizeOf(*words) <= MOST_ENTRIES;
}

BranchAndBound::BranchAndBound(const IntegerProgram& program, const IntegerVector& goal, unsigned seed) {
  std::optional<WordProgram> words = wordProgramOf(program);
  if (!narrow(*words)) return;
  std::vector<double> direction;
  for (const Integer& count : goal) direction.push_back(count.get_d());
  direction.resize(program.box.size());
  search_.emplace(std::move(*words), direction, seed);
}

BranchAndBound::End BranchAndBound::run(const Visit& visit, unsigned long effort,
                                        const std::function<bool()>& isOver,
                                        std::atomic<unsigned long>& nodes) {
  bool isOpen = search_.has_value();
  while (isOpen) {
    if (work() > effort || isOver()) return End::GIVEN_UP;
    ++nodes;
    const std::optional<Split> split = look(visit, isOver);
    if (isStopped_) return End::STOPPED;
    if (split) descend(*split);
    isOpen = split || takeOther();
  }
  return End::COMPLETE;
}

// Nothing: all points of this box were visited.
std::optional<BranchAndBound::Split> BranchAndBound::look(const Visit& visit,
                                                          const std::function<bool()>& isOver) {
  if (!search_->domains.propagate()) return std::nullopt;
  const BoxRelaxation::Outcome outcome = search_->relaxation.run(search_->domains.box(), isOver);
  if (outcome == BoxRelaxation::Outcome::EMPTY) return std::nullopt;
  const bool hasPoint = outcome == BoxRelaxation::Outcome::POINT;
  if (hasPoint)
    if (const auto split = splitAtPoint()) return split;
  takeNearest(hasPoint);
  if (keepsRows()) {
    IntegerVector z;
    for (const WordRange& value : nearest_) z.emplace_back(value.low);
    isStopped_ = !visit(z);
  }
  return splitBeside();
}

// Nothing: the point is whole.
std::optional<BranchAndBound::Split> BranchAndBound::splitAtPoint() const {
  const std::vector<double>& values = search_->relaxation.values();
  std::optional<Split> best;
  double most = -1;
  for (std::size_t j = 0; j < values.size(); ++j) {
    if (std::fabs(values[j] - std::round(values[j])) <= WHOLE) continue;
    const WordRange& range = search_->domains.box()[j];
    // False for what is no number, too.
    const bool isInside =
        values[j] > static_cast<double>(range.low) && values[j] < static_cast<double>(range.high);
    if (!isInside) continue;
    const auto below = static_cast<std::int64_t>(std::floor(values[j]));
    const double down = search_->relaxation.lossDown(j);
    const double up = search_->relaxation.lossUp(j);
    const double loss = std::min(down, up);
    if (loss <= most) continue;
    most = loss;
    const WordRange low{range.low, below};
    const WordRange high{below + 1, range.high};
    best = down < up ? Split{j, low, high} : Split{j, high, low};
  }
  return best;
}

// Beside the nearest point, which has been seen. Nothing: it is all there is.
std::optional<BranchAndBound::Split> BranchAndBound::splitBeside() const {
  const std::vector<WordRange>& box = search_->domains.box();
  const auto width = [](const WordRange& range) { return range.high - range.low; };
  const auto widest = std::max_element(
      box.begin(), box.end(), [&](const WordRange& a, const WordRange& b) { return width(a) < width(b); });
  if (widest == box.end() || widest->isFixed()) return std::nullopt;
  const auto j = static_cast<std::size_t>(widest - box.begin());
  const std::int64_t value = nearest_[j].low;
  const std::int64_t below = value > widest->low ? value - 1 : value + width(*widest) / 2;
  return Split{j, {below + 1, widest->high}, {widest->low, below}};
}

void BranchAndBound::takeNearest(bool hasPoint) {
  nearest_ = search_->domains.box();
  for (std::size_t j = 0; j < nearest_.size(); ++j) {
    WordRange& range = nearest_[j];
    const double value = hasPoint ? search_->relaxation.values()[j] : static_cast<double>(range.low);
    range.low = std::clamp(static_cast<std::int64_t>(std::llround(value)), range.low, range.high);
    range.high = range.low;
  }
}

bool BranchAndBound::keepsRows() const {
  const std::vector<WordRow>& rows = search_->program.rows;
  return std::all_of(rows.begin(), rows.end(), [&](const WordRow& row) {
    const WordRange value = activityOf(row, nearest_);
    return value.low >= row.range.low && value.high <= row.range.high;
  });
}

void BranchAndBound::descend(const Split& split) {
  others_.push_back({search_->domains.mark(), split.variable, split.second});
  search_->domains.narrow(split.variable, split.first);
}

bool BranchAndBound::takeOther() {
  if (others_.empty()) return false;
  const Other other = others_.back();
  others_.pop_back();
  search_->domains.goBack(other.mark);
  search_->domains.narrow(other.variable, other.range);
  return true;
}

unsigned long BranchAndBound::work() const {
  return search_->domains.work() + search_->relaxation.work();
}

}  // namespace latbox::complete
