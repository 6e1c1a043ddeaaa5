#include "complete/linear/domains.h"

#include <algorithm>

namespace latbox::complete {
namespace {

constexpr unsigned long MOST_VISITS = 50;

}  // namespace

Domains::Domains(const WordProgram& program)
    : program_(program),
      box_(program.box),
      rowsOf_(program.box.size()),
      open_(program.rows.size()),
      isOpen_(program.rows.size()) {
  for (std::size_t i = 0; i < program.rows.size(); ++i) {
    for (const WordRow::Term& term : program.rows[i].terms) rowsOf_[term.variable].push_back(i);
    mostWork_ += MOST_VISITS * program.rows[i].terms.size();
    touch(i);
  }
}

void Domains::touch(std::size_t row) {
  if (isOpen_[row] != 0) return;
  isOpen_[row] = 1;
  open_[(first_ + openCount_++) % open_.size()] = row;
}

void Domains::goBack(Mark mark) {
  for (; trail_.size() > mark; trail_.pop_back()) box_[trail_.back().variable] = trail_.back().range;
}

void Domains::narrow(std::size_t variable, const WordRange& range) {
  trail_.push_back({variable, box_[variable]});
  box_[variable] = range;
  for (const std::size_t i : rowsOf_[variable]) touch(i);
  work_ += rowsOf_[variable].size();
}

bool Domains::propagate() {
  const unsigned long enough = work_ + mostWork_;
  bool isPossible = true;
  while (openCount_ > 0) {
    const std::size_t i = open_[first_];
    first_ = (first_ + 1) % open_.size();
    --openCount_;
    isOpen_[i] = 0;
    if (isPossible && work_ < enough) isPossible = look(program_.rows[i]);
  }
  return isPossible;
}

bool Domains::look(const WordRow& row) {
  work_ += row.terms.size();
  const WordRange activity = activityOf(row, box_);
  if (activity.low > row.range.high || activity.high < row.range.low) return false;
  if (activity.low >= row.range.low && activity.high <= row.range.high) return true;
  return std::all_of(row.terms.begin(), row.terms.end(),
                     [&](const WordRow::Term& term) { return narrowTerm(term, row.range, activity); });
}

// What the sides leave for a term when the others do their utmost, which was summed with the ends of before:
// these are in its own range still.
bool Domains::narrowTerm(const WordRow::Term& term, const WordRange& sides, const WordRange& activity) {
  const WordRange& own = box_[term.variable];
  const std::int64_t size = std::abs(term.count);
  // Steps of the variable from its ends at the least and at the greatest activity.
  const std::int64_t fromLeast = (sides.high - activity.low) / size;
  const std::int64_t fromGreatest = (activity.high - sides.low) / size;
  const std::int64_t fromLow = term.count > 0 ? fromLeast : fromGreatest;
  const std::int64_t fromHigh = term.count > 0 ? fromGreatest : fromLeast;
  const std::int64_t width = own.high - own.low;
  if (fromLow >= width && fromHigh >= width) return true;
  const WordRange range{std::max(own.low, own.high - fromHigh), std::min(own.high, own.low + fromLow)};
  if (range.isEmpty()) return false;
  narrow(term.variable, range);
  return true;
}

}  // namespace latbox::complete
