#include "complete/jobs/regions.h"

namespace latbox::complete::jobs {
namespace {

class Regions {
 public:
  explicit Regions(const PieceLattice& lattice) : lattice_(lattice) {}

  std::vector<std::vector<Row>> result(const Piece& piece) const {
    if (piece.empty()) return {{}};
    std::vector<std::vector<Row>> regions;
    std::vector<Row> above;
    std::size_t level = lattice_.box.rank();
    for (std::size_t i = 0; i < piece.size() && level > 0; ++i) {
      const Choice& choice = piece[i];
      --level;
      const bool isAll = !choice.closedUp && !choice.closedDown && choice.up == choice.down + 1;
      if (isAll) regions.push_back(above);
      if (!isAll && !choice.closedUp) regions.push_back(with(above, level, choice.up, std::nullopt));
      if (!isAll && !choice.closedDown) regions.push_back(with(above, level, std::nullopt, choice.down));
      above.push_back(row(level, choice.chosen, choice.chosen));
    }
    return regions;
  }

 private:
  Row row(std::size_t level, std::optional<Integer> low, std::optional<Integer> high) const {
    const IntegerVector& dual = lattice_.dual[level];
    Row row;
    row.a.resize(lattice_.box.fixed.size());
    Integer own = 0;
    for (std::size_t c = 0; c < dual.size(); ++c) {
      row.a[lattice_.box.variables[c]] = dual[c];
      own += dual[c] * lattice_.box.point[c];
    }
    if (low) row.range.low = *low + own;
    if (high) row.range.high = *high + own;
    return row;
  }

  std::vector<Row> with(std::vector<Row> rows, std::size_t level, std::optional<Integer> low,
                        std::optional<Integer> high) const {
    rows.push_back(row(level, std::move(low), std::move(high)));
    return rows;
  }

  const PieceLattice& lattice_;
};

}  // namespace

std::vector<std::vector<Row>> regionsOf(const PieceLattice& lattice, const Piece& piece) {
  return Regions(lattice).result(piece);
}

}  // namespace latbox::complete::jobs
