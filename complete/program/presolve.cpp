#include "complete/program/presolve.h"

#include <algorithm>
#include <map>
#include <utility>

namespace latbox::complete {
namespace {

// The least or the greatest value of a row: a sum over variables, some of which may be open on that side.
struct Activity {
  Integer sum = 0;
  std::size_t open = 0;

  void add(const Integer& a, const std::optional<Integer>& end) {
    if (end)
      sum += a * *end;
    else
      ++open;
  }
};

class Tightening {
 public:
  explicit Tightening(IntegerProgram& program) : p_(program) {}

  bool result() {
    for (const Range& range : p_.box)
      if (range.isEmpty()) return false;
    for (int round = 0; round < MOST_ROUNDS && changed_; ++round) {
      changed_ = false;
      for (Row& row : p_.rows)
        if (!settle(row)) return false;
      if (!dropAndMerge()) return false;
    }
    // Variables that the last round has fixed.
    for (Row& row : p_.rows)
      if (!normalise(row)) return false;
    return dropAndMerge();
  }

 private:
  // Rows that have lost their coefficients go, and those on the same combination become one: two
  // one-sided rows would be two wide coordinates of the lattice, of which neither cuts anything. Rows are
  // coprime here. False: a contradiction.
  bool dropAndMerge() {
    std::erase_if(p_.rows, [](const Row& row) { return row.a.empty(); });
    std::map<IntegerVector, std::size_t> first;
    for (std::size_t i = 0; i < p_.rows.size(); ++i) {
      Row& row = p_.rows[i];
      turn(row);
      const auto [place, isNew] = first.emplace(row.a, i);
      if (isNew) continue;
      Range& range = p_.rows[place->second].range;
      if (row.range.low && (!range.low || *range.low < *row.range.low)) range.low = row.range.low;
      if (row.range.high && (!range.high || *range.high > *row.range.high)) range.high = row.range.high;
      if (range.isEmpty()) return false;
      row.a.clear();
    }
    std::erase_if(p_.rows, [](const Row& row) { return row.a.empty(); });
    return true;
  }

  // The first coefficient that is not 0 becomes positive.
  static void turn(Row& row) {
    const auto lead = std::find_if(row.a.begin(), row.a.end(), [](const Integer& a) { return a != 0; });
    if (lead == row.a.end() || *lead > 0) return;
    for (Integer& a : row.a) a = -a;
    std::swap(row.range.low, row.range.high);
    if (row.range.low) row.range.low = -*row.range.low;
    if (row.range.high) row.range.high = -*row.range.high;
  }

  // False: a contradiction. A row that has done its duty loses its coefficients.
  bool settle(Row& row) {
    if (!normalise(row)) return false;
    if (row.a.empty()) return true;
    const Activity low = activity(row, false);
    const Activity high = activity(row, true);
    if (low.open == 0 && row.range.high && low.sum > *row.range.high) return false;
    if (high.open == 0 && row.range.low && high.sum < *row.range.low) return false;
    if (isImplied(row, low, high)) {
      row.a.clear();
      return true;
    }
    for (std::size_t j = 0; j < row.a.size(); ++j)
      if (row.a[j] != 0 && !narrow(row, j, low, high)) return false;
    return true;
  }

  static bool isImplied(const Row& row, const Activity& low, const Activity& high) {
    return (!row.range.low || (low.open == 0 && low.sum >= *row.range.low)) &&
           (!row.range.high || (high.open == 0 && high.sum <= *row.range.high));
  }

  bool normalise(Row& row) {
    Integer divisor = 0;
    for (std::size_t j = 0; j < row.a.size(); ++j) {
      if (row.a[j] != 0 && p_.box[j].isFixed()) takeOut(row, j);
      divisor = gcd(divisor, row.a[j]);
    }
    if (row.range.isEmpty()) return false;
    if (divisor == 0) return dismiss(row);
    if (divisor != 1) divide(row, divisor);
    return !row.range.isEmpty();
  }

  void takeOut(Row& row, std::size_t j) {
    const Integer part = row.a[j] * *p_.box[j].low;
    row.a[j] = 0;
    if (row.range.low) *row.range.low -= part;
    if (row.range.high) *row.range.high -= part;
  }

  static bool dismiss(Row& row) {
    row.a.clear();
    return (!row.range.low || *row.range.low <= 0) && (!row.range.high || *row.range.high >= 0);
  }

  static void divide(Row& row, const Integer& divisor) {
    for (Integer& a : row.a) a /= divisor;
    if (row.range.low) row.range.low = ceilOf(*row.range.low, divisor);
    if (row.range.high) row.range.high = floorOf(*row.range.high, divisor);
  }

  Activity activity(const Row& row, bool greatest) const {
    Activity activity;
    for (std::size_t j = 0; j < row.a.size(); ++j)
      if (row.a[j] != 0) activity.add(row.a[j], end(j, greatest == (row.a[j] > 0)));
    return activity;
  }

  const std::optional<Integer>& end(std::size_t j, bool high) const {
    return high ? p_.box[j].high : p_.box[j].low;
  }

  // The row's side less the most that the other variables can do bounds the variable.
  bool narrow(const Row& row, std::size_t j, const Activity& low, const Activity& high) {
    const bool positive = row.a[j] > 0;
    // Both are told before the box changes: the activities were summed with these ends.
    const auto rest = [&](const Activity& activity,
                          const std::optional<Integer>& own) -> std::optional<Integer> {
      if (activity.open > (own ? 0u : 1u)) return std::nullopt;
      return own ? Integer(activity.sum - row.a[j] * *own) : activity.sum;
    };
    const std::optional<Integer> least = rest(low, end(j, !positive));
    const std::optional<Integer> most = rest(high, end(j, positive));
    const Integer size = abs(row.a[j]);
    if (row.range.high && least) {
      const Integer left = *row.range.high - *least;
      positive ? lowerTo(j, floorOf(left, size)) : raiseTo(j, ceilOf(Integer(-left), size));
    }
    if (row.range.low && most) {
      const Integer left = *row.range.low - *most;
      positive ? raiseTo(j, ceilOf(left, size)) : lowerTo(j, floorOf(Integer(-left), size));
    }
    return !p_.box[j].isEmpty();
  }

  void lowerTo(std::size_t j, const Integer& high) {
    if (p_.box[j].high && *p_.box[j].high <= high) return;
    p_.box[j].high = high;
    changed_ = true;
  }

  void raiseTo(std::size_t j, const Integer& low) {
    if (p_.box[j].low && *p_.box[j].low >= low) return;
    p_.box[j].low = low;
    changed_ = true;
  }

  IntegerProgram& p_;
  bool changed_ = true;
};

}  // namespace

bool tighten(IntegerProgram& program) {
  return Tightening(program).result();
}

}  // namespace latbox::complete
