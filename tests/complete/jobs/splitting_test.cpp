#include "complete/jobs/splitting.h"

#include "../market_split.h"
#include "complete/jobs/coefficients.h"
#include "complete/jobs/cover.h"
#include "complete/jobs/regions.h"
#include "complete/program/presolve.h"

namespace latbox::complete::jobs {
namespace {

using testing::Collector;
using testing::marketSplit;

BoxLattice latticeOf(const IntegerProgram& program) {
  BoxLattice lattice = *boxLatticeOf(program);
  settle(lattice);
  return lattice;
}

std::set<IntegerVector> pointsOf(BoxLattice lattice, std::vector<Piece> pieces) {
  Collector collector;
  SearchControl control;
  SearchSettings settings;
  settings.pieces = std::move(pieces);
  search(lattice, collector, control, settings);
  return collector.points;
}

std::vector<Piece> allOf(const std::vector<Portion>& portions) {
  std::vector<Piece> all;
  for (const Portion& portion : portions) all.insert(all.end(), portion.pieces.begin(), portion.pieces.end());
  return all;
}

class Splitting : public ::testing::Test {
 protected:
  IntegerProgram program = marketSplit(1, 14, 3);
  BoxLattice lattice = latticeOf(program);
};

TEST_F(Splitting, LosesNothingAndTakesNothingTwice) {
  const std::set<IntegerVector> all = pointsOf(lattice, {});
  ASSERT_GT(all.size(), 3u);
  for (const std::size_t count : {1, 2, 7, 50}) {
    const auto portions = split(lattice, {{}}, count);
    EXPECT_LE(portions.size(), count);
    EXPECT_TRUE(isSame(allOf(portions), {{}}));
    std::size_t found = 0;
    for (const Portion& portion : portions)
      for (const IntegerVector& point : pointsOf(lattice, portion.pieces)) {
        EXPECT_TRUE(all.contains(point));
        ++found;
      }
    EXPECT_EQ(found, all.size());
  }
}

TEST_F(Splitting, SplitsWhatWasSplit) {
  for (const Portion& portion : split(lattice, {{}}, 4))
    EXPECT_TRUE(isSame(allOf(split(lattice, portion.pieces, 3)), portion.pieces));
}

TEST_F(Splitting, SplitsWhatASearchHasLeft) {
  Collector collector(2);
  SearchControl control;
  ASSERT_FALSE(search(lattice, collector, control));
  const auto portions = split(lattice, control.left.pieces, 3);
  EXPECT_TRUE(isSame(allOf(portions), control.left.pieces));
}

TEST_F(Splitting, CoefficientsTellThePieceOfAPoint) {
  const PieceLattice with = withDual(lattice);
  const Coefficients coefficients(with);
  const auto portions = split(lattice, {{}}, 7);
  for (std::size_t i = 0; i < portions.size(); ++i)
    for (const IntegerVector& point : pointsOf(lattice, portions[i].pieces))
      for (std::size_t j = 0; j < portions.size(); ++j)
        EXPECT_EQ(coefficients.isIn(portions[j].pieces, point), i == j);
}

TEST_F(Splitting, RegionsHaveThePointsOfThePiece) {
  const PieceLattice with = withDual(lattice);
  for (const Portion& portion : split(lattice, {{}}, 5)) {
    std::size_t found = 0;
    for (const Piece& piece : portion.pieces)
      for (const std::vector<Row>& region : regionsOf(with, piece)) {
        IntegerProgram part = program;
        part.rows.insert(part.rows.end(), region.begin(), region.end());
        if (const auto own = tighten(part) ? boxLatticeOf(part) : std::nullopt)
          found += pointsOf(*own, {}).size();
      }
    EXPECT_EQ(found, pointsOf(lattice, portion.pieces).size());
  }
}

TEST_F(Splitting, TheLatticeGoesThereAndBack) {
  const std::string text = textOf(withDual(lattice));
  PieceLattice read = parseLattice(text);
  EXPECT_EQ(textOf(read), text);
  EXPECT_TRUE(isDual(read));
  read.dual[0][0] += 1;
  EXPECT_FALSE(isDual(read));
}

}  // namespace
}  // namespace latbox::complete::jobs
