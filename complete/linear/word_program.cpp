#include "complete/linear/word_program.h"

#include <algorithm>
#include <cstdlib>

namespace latbox::complete {
namespace {

__extension__ using Wide = __int128;

bool fits(const Integer& value, std::int64_t most) {
  return mpz_cmpabs_ui(value.get_mpz_t(), static_cast<unsigned long>(most)) <= 0;
}

std::optional<WordRange> wordRangeOf(const Range& range) {
  if (!range.isFinite() || !fits(*range.low, MOST_SIZE) || !fits(*range.high, MOST_SIZE)) return std::nullopt;
  return WordRange{range.low->get_si(), range.high->get_si()};
}

std::int64_t largestEnd(const WordRange& range) {
  return std::max(std::abs(range.low), std::abs(range.high));
}

// A side that is not there, or behind what the row can be, says nothing.
std::int64_t sideWithin(const std::optional<Integer>& side, const WordRange& activity, std::int64_t idle) {
  if (!side) return idle;
  if (*side < activity.low) return activity.low - 1;
  if (*side > activity.high) return activity.high + 1;
  return side->get_si();
}

std::optional<WordRow> wordRowOf(const Row& row, const std::vector<WordRange>& box) {
  WordRow result;
  std::int64_t room = MOST_ACTIVITY;
  for (std::size_t j = 0; j < row.a.size(); ++j) {
    if (row.a[j] == 0) continue;
    if (!fits(row.a[j], MOST_SIZE)) return std::nullopt;
    result.terms.push_back({j, row.a[j].get_si()});
    room -= std::abs(result.terms.back().count) * largestEnd(box[j]);
    if (room < 0) return std::nullopt;
  }
  const WordRange activity = activityOf(result, box);
  result.range = {std::max(activity.low, sideWithin(row.range.low, activity, activity.low)),
                  std::min(activity.high, sideWithin(row.range.high, activity, activity.high))};
  return result;
}

}  // namespace

std::optional<WordProgram> wordProgramOf(const IntegerProgram& program) {
  if (program.box.size() > MOST_COUNT || program.rows.size() > MOST_COUNT) return std::nullopt;
  WordProgram result;
  for (const Range& range : program.box) {
    const auto own = wordRangeOf(range);
    if (!own) return std::nullopt;
    result.box.push_back(*own);
  }
  for (const Row& row : program.rows) {
    auto own = wordRowOf(row, result.box);
    if (!own) return std::nullopt;
    result.rows.push_back(std::move(*own));
  }
  return result;
}

WordRange activityOf(const WordRow& row, const std::vector<WordRange>& box) {
  WordRange activity;
  for (const auto& [j, count] : row.terms) {
    activity.low += count * (count > 0 ? box[j].low : box[j].high);
    activity.high += count * (count > 0 ? box[j].high : box[j].low);
  }
  return activity;
}

namespace {

// Of a row a z <= b, or with its sign turned. `most` is what a z can be.
class OneSided {
 public:
  OneSided(WordRow& row, const std::vector<WordRange>& box, int sign, std::int64_t most)
      : row_(row), box_(box), sign_(sign), most_(most), side_(sign > 0 ? row.range.high : -row.range.low) {}

  // Where z_j one step below its better end leaves a z <= b, whatever the others are, a_j may shrink by what
  // is left over, and b with it by as much as that is at the better end.
  void strengthen() {
    for (WordRow::Term& term : row_.terms) {
      const WordRange& range = box_[term.variable];
      if (range.isFixed()) continue;
      const std::int64_t size = std::abs(term.count);
      const std::int64_t over = side_ - (most_ - size);
      if (over <= 0 || over >= size) continue;
      const bool isUp = term.count * sign_ > 0;
      const std::int64_t end = isUp ? range.high : range.low;
      const std::int64_t change = isUp ? over : -over;
      term.count -= sign_ * change;
      side_ -= change * end;
      most_ -= change * end;
    }
    const WordRange activity = activityOf(row_, box_);
    row_.range = activity;
    (sign_ > 0 ? row_.range.high : row_.range.low) = sign_ * side_;
  }

 private:
  WordRow& row_;
  const std::vector<WordRange>& box_;
  int sign_;
  std::int64_t most_;
  std::int64_t side_;
};

}  // namespace

void strengthen(WordProgram& program) {
  for (WordRow& row : program.rows) {
    const WordRange activity = activityOf(row, program.box);
    const bool isBelow = row.range.high < activity.high;
    const bool isAbove = row.range.low > activity.low;
    if (isBelow && !isAbove) OneSided(row, program.box, 1, activity.high).strengthen();
    if (isAbove && !isBelow) OneSided(row, program.box, -1, -activity.low).strengthen();
  }
}

bool isContradiction(const WordProgram& program, const std::vector<WordRange>& box,
                     const std::vector<std::int64_t>& y) {
  std::vector<Wide> rest(box.size());
  Wide most = 0;
  for (std::size_t i = 0; i < y.size(); ++i) {
    if (y[i] == 0) continue;
    const WordRow& row = program.rows[i];
    most += Wide(y[i]) * (y[i] > 0 ? row.range.high : row.range.low);
    for (const auto& [j, count] : row.terms) rest[j] -= Wide(y[i]) * count;
  }
  for (std::size_t j = 0; j < rest.size(); ++j) most += rest[j] * (rest[j] > 0 ? box[j].high : box[j].low);
  return most < 0;
}

}  // namespace latbox::complete
