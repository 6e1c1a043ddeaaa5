#include "check/proof_lattice.h"

#include <cstdint>
#include <set>

#include "check/proof_ranges.h"

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
  Building(const System& system, const Lattice& lattice) : system_(system), l_(lattice) {}

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
  [[noreturn]] void refuse(const std::string& reason, std::size_t line = 0) const {
    throw Refused(line == 0 ? l_.line : line, reason);
  }

  void takeColumns() {
    for (std::size_t j = 0; j < system_.variables.size(); ++j) {
      const Range& range = system_.variables[j];
      box_.z.emplace_back(range.isFixed() ? *range.low : 0);
      if (range.isFixed()) continue;
      takeColumn(range, named("x", j + 1));
      box_.variables.push_back(j);
    }
    requireRows(l_.coordinates);
    for (const std::size_t row : l_.coordinates.numbers)
      takeColumn(system_.rows[row - 1].range, named("row ", row));
  }

  void takeColumn(const Range& range, const std::string& name) {
    if (!range.isClosed()) refuse(name + " has an open end");
    box_.low.push_back(*range.low);
    box_.high.push_back(*range.high);
  }

  void requireRows(const Rows& rows) const {
    if (rows.numbers.size() != rows.announced)
      refuse(std::to_string(rows.numbers.size()) + " rows, not " + std::to_string(rows.announced), rows.line);
    std::set<std::size_t> met;
    for (const std::size_t row : rows.numbers) {
      if (row == 0 || row > system_.rows.size()) refuse(named("there is no row ", row), rows.line);
      if (!met.insert(row).second) refuse(named("twice: row ", row), rows.line);
    }
  }

  // A and b, a line for each equation and then for each coordinate row.
  void takeMatrix() {
    requireRows(l_.equations);
    for (const std::size_t number : l_.equations.numbers) {
      const SystemRow& row = system_.rows[number - 1];
      if (!row.range.isFixed()) refuse(named("no equation: row ", number), l_.equations.line);
      addLine(row.form, *row.range.low);
    }
    for (std::size_t i = 0; i < l_.coordinates.numbers.size(); ++i) {
      addLine(system_.rows[l_.coordinates.numbers[i] - 1].form, 0);
      matrix_.back()[box_.variables.size() + i] = -1;
    }
  }

  void addLine(const Form& form, const mpz_class& side) {
    Integers line(box_.columns());
    for (std::size_t c = 0; c < box_.variables.size(); ++c) line[c] = form.coefficients[box_.variables[c]];
    matrix_.push_back(std::move(line));
    // The fixed variables' part.
    sides_.push_back(side - form.at(box_.z));
  }

  void requireLattice() {
    requireSize(l_.point);
    for (std::size_t r = 0; r < matrix_.size(); ++r)
      if (product(matrix_[r], l_.point.values) != sides_[r])
        refuse(named("the point does not keep equation ", r + 1), l_.point.line);
    for (const Numbers& vector : l_.basis) {
      requireSize(vector);
      for (std::size_t r = 0; r < matrix_.size(); ++r)
        if (product(matrix_[r], vector.values) != 0)
          refuse(named("the vector is not in the kernel of equation ", r + 1), vector.line);
    }
    for (std::size_t i = 0; i < l_.dual.size(); ++i) {
      requireSize(l_.dual[i]);
      for (std::size_t j = 0; j < l_.basis.size(); ++j)
        if (product(l_.dual[i].values, l_.basis[j].values) != (i == j ? 1 : 0))
          refuse(named("not the wanted product with basis vector ", j), l_.dual[i].line);
    }
  }

  void requireSize(const Numbers& vector) const {
    if (vector.values.size() != box_.columns())
      refuse(std::to_string(vector.values.size()) + " numbers, not " + std::to_string(box_.columns()),
             vector.line);
  }

  // Without this a part of the kernel would pass for all of it.
  void requireRank() const {
    const std::size_t rank = rankModuloPrime();
    if (rank + l_.basis.size() < box_.columns())
      refuse("the kernel may have " + std::to_string(box_.columns() - rank) + " vectors, not " +
             std::to_string(l_.basis.size()));
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
    box_.point = l_.point.values;
    for (const Numbers& vector : l_.basis) box_.basis.push_back(vector.values);
    for (std::size_t c = 0; c < box_.columns(); ++c) {
      mpz_class common;
      for (const Integers& vector : box_.basis) common = gcd(common, vector[c]);
      Range range{box_.low[c], box_.high[c]};
      if (common > 0) intoClass(range, box_.point[c], common);
      box_.isEmpty = box_.isEmpty || range.isEmpty() || (common == 0 && !range.holds(box_.point[c]));
      box_.low[c] = common == 0 ? box_.point[c] : *range.low;
      box_.high[c] = common == 0 ? box_.point[c] : *range.high;
    }
  }

  void takeReach() {
    for (const Numbers& vector : l_.dual) {
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
  const Lattice& l_;
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

Box boxOf(const System& system, const Lattice& lattice) {
  return Building(system, lattice).result();
}

}  // namespace latbox::check::proof
