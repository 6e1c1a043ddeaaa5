#include "check/proof/lattice.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "check/proof/ranges.h"

namespace latbox::check::proof {
namespace {

constexpr std::uint64_t PRIME = 2147483647;

std::string named(const char* what, std::size_t number) {
  return what + std::to_string(number);
}

std::uint64_t power(std::uint64_t base, std::uint64_t exponent) {
  std::uint64_t result = 1;
  for (; exponent > 0; exponent /= 2, base = base * base % PRIME)
    if (exponent % 2 == 1) result = result * base % PRIME;
  return result;
}

class Building {
 public:
  Building(const System& system, const Search& search) : system_(system), s_(search) {}

  Box result() {
    takeColumns();
    takeMatrix();
    requireLattice();
    requireRank();
    takeEnds();
    if (!box_.isEmpty) takeReach();
    return std::move(box_);
  }

 private:
  void takeColumns() {
    for (std::size_t j = 0; j < system_.variables.size(); ++j) {
      const Range& range = system_.variables[j];
      box_.fixed.emplace_back(range.isFixed() ? *range.low : 0);
      if (range.isFixed()) continue;
      takeColumn(range, named("x", j + 1));
      box_.variables.push_back(j);
    }
    for (const SystemRow* row : rowsOf(s_.coordinates, 2)) takeColumn(row->range, "a coordinate row");
  }

  void takeColumn(const Range& range, const std::string& name) {
    if (!range.low || !range.high) throw Refused(s_.lattice.line, name + " has an open end");
    box_.low.push_back(*range.low);
    box_.high.push_back(*range.high);
  }

  std::vector<const SystemRow*> rowsOf(const Numbers& line, std::size_t announced) const {
    requireSize(line, s_.lattice.values[announced]);
    std::vector<const SystemRow*> rows;
    for (const mpz_class& number : line.values) {
      if (number < 1 || number > system_.rows.size())
        throw Refused(line.line, "there is no row " + number.get_str());
      rows.push_back(&system_.rows[number.get_ui() - 1]);
    }
    if (std::set<const SystemRow*>(rows.begin(), rows.end()).size() < rows.size())
      throw Refused(line.line, "a row stands twice");
    return rows;
  }

  static void requireSize(const Numbers& line, const mpz_class& size) {
    if (line.values.size() != size)
      throw Refused(line.line, std::to_string(line.values.size()) + " numbers, not " + size.get_str());
  }

  // A and b, a line for each equation and then for each coordinate row.
  void takeMatrix() {
    for (const SystemRow* row : rowsOf(s_.equations, 1)) {
      if (!row->range.isFixed()) throw Refused(s_.equations.line, "a row has more than one value");
      addLine(*row, *row->range.low);
    }
    std::size_t column = box_.variables.size();
    for (const SystemRow* row : rowsOf(s_.coordinates, 2)) {
      addLine(*row, 0);
      matrix_.back()[column++] = -1;
    }
  }

  void addLine(const SystemRow& row, const mpz_class& side) {
    Integers line(box_.columns());
    for (std::size_t c = 0; c < box_.variables.size(); ++c) line[c] = row.coefficients[box_.variables[c]];
    matrix_.push_back(std::move(line));
    sides_.push_back(side - product(row.coefficients, box_.fixed));
  }

  void requireLattice() {
    requireSize(s_.point, box_.columns());
    for (std::size_t r = 0; r < matrix_.size(); ++r)
      if (product(matrix_[r], s_.point.values) != sides_[r])
        throw Refused(s_.point.line, named("the point does not keep equation ", r + 1));
    for (const Numbers& vector : s_.basis) {
      requireSize(vector, box_.columns());
      for (std::size_t r = 0; r < matrix_.size(); ++r)
        if (product(matrix_[r], vector.values) != 0)
          throw Refused(vector.line, named("not in the kernel of equation ", r + 1));
    }
    for (std::size_t i = 0; i < s_.dual.size(); ++i) {
      requireSize(s_.dual[i], box_.columns());
      for (std::size_t j = 0; j < s_.basis.size(); ++j)
        if (product(s_.dual[i].values, s_.basis[j].values) != (i == j ? 1 : 0))
          throw Refused(s_.dual[i].line, named("not the wanted product with basis vector ", j));
    }
  }

  // Without this a part of the kernel would pass for all of it.
  void requireRank() const {
    const std::size_t rank = rankModuloPrime();
    if (rank + s_.basis.size() < box_.columns())
      throw Refused(s_.lattice.line, named("the rank of the kernel may be ", box_.columns() - rank));
  }

  std::size_t rankModuloPrime() const {
    std::vector<std::vector<std::uint64_t>> lines;
    for (const Integers& line : matrix_) {
      lines.emplace_back();
      for (const mpz_class& value : line) lines.back().push_back(mpz_fdiv_ui(value.get_mpz_t(), PRIME));
    }
    std::size_t rank = 0;
    for (std::size_t c = 0; c < box_.columns() && rank < lines.size(); ++c) {
      std::size_t pivot = rank;
      while (pivot < lines.size() && lines[pivot][c] == 0) ++pivot;
      if (pivot == lines.size()) continue;
      std::swap(lines[rank], lines[pivot]);
      for (std::size_t r = rank + 1; r < lines.size(); ++r) eliminate(lines[r], lines[rank], c);
      ++rank;
    }
    return rank;
  }

  static void eliminate(std::vector<std::uint64_t>& line, const std::vector<std::uint64_t>& pivot,
                        std::size_t c) {
    if (line[c] == 0) return;
    const std::uint64_t factor = PRIME - line[c] * power(pivot[c], PRIME - 2) % PRIME;
    for (std::size_t j = c; j < line.size(); ++j) line[j] = (line[j] + factor * pivot[j]) % PRIME;
  }

  // Each column moves by multiples of the greatest common divisor of its basis numbers.
  void takeEnds() {
    box_.point = s_.point.values;
    for (const Numbers& vector : s_.basis) box_.basis.push_back(vector.values);
    for (std::size_t c = 0; c < box_.columns(); ++c) {
      mpz_class common;
      for (const Integers& vector : box_.basis) common = gcd(common, vector[c]);
      Range range{box_.low[c], box_.high[c]};
      const mpz_class& fixed = box_.point[c];
      if (common == 0)
        range = {std::max(fixed, *range.low), std::min(fixed, *range.high)};
      else
        intoClass(range, fixed, common);
      box_.low[c] = *range.low;
      box_.high[c] = *range.high;
      box_.isEmpty = box_.isEmpty || range.isEmpty();
    }
  }

  void takeReach() {
    for (const Numbers& vector : s_.dual) {
      const Integers& d = vector.values;
      const mpz_class origin = product(d, box_.point);
      mpz_class least = -origin;
      mpz_class greatest = -origin;
      for (std::size_t c = 0; c < box_.columns(); ++c) {
        least += d[c] * (d[c] < 0 ? box_.high[c] : box_.low[c]);
        greatest += d[c] * (d[c] < 0 ? box_.low[c] : box_.high[c]);
      }
      box_.alpha.push_back(least);
      box_.beta.push_back(greatest);
    }
  }

  const System& system_;
  const Search& s_;
  std::vector<Integers> matrix_;
  Integers sides_;
  Box box_;
};

}  // namespace

mpz_class product(const Integers& a, const Integers& b) {
  mpz_class sum;
  for (std::size_t c = 0; c < a.size(); ++c) sum += a[c] * b[c];
  return sum;
}

Box boxOf(const System& system, const Search& search) {
  return Building(system, search).result();
}

}  // namespace latbox::check::proof
