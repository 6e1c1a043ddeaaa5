#include "complete/tree/walk.h"

#include <cmath>

#include "small_lattice.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;

// A box with a row, large enough for pieces of several levels.
BoxLattice knapsack(unsigned seed) {
  std::mt19937 random(seed);
  IntegerProgram program;
  Row row;
  for (int j = 0; j < 8; ++j) {
    program.box.push_back(rangeOf(0, 2));
    row.a.emplace_back(static_cast<long>(20 + random() % 30));
  }
  row.range = {Integer(210), Integer(240)};
  program.rows.push_back(row);
  return *boxLatticeOf(program);
}

template <class R>
class WalkTest : public ::testing::Test {
 protected:
  static constexpr unsigned long BITS = std::is_same_v<R, double> ? 53 : 256;
  using Leaves = std::multiset<IntegerVector>;

  static IntegerVector leafOf(const Walk<R>& walk, std::size_t rank) {
    IntegerVector leaf;
    for (std::size_t i = 0; i < rank; ++i) leaf.emplace_back(walk.lambda()[i]);
    return leaf;
  }

  static Leaves undisturbed(const CutTables<R>& tables, std::size_t rank) {
    Leaves leaves;
    Walk<R> walk(tables);
    walk.start({});
    for (WalkPause pause = walk.next(); pause != WalkPause::END; pause = walk.next())
      if (pause == WalkPause::LEAF) leaves.insert(leafOf(walk, rank));
    return leaves;
  }

  // Pieces, one after the other, each walked for some random time, split, stopped, or taken back at a leaf.
  struct Disturbed {
    Disturbed(const CutTables<R>& tables, std::size_t rank, unsigned seed) : rank_(rank), random_(seed) {
      pieces_.emplace_back();
      while (!pieces_.empty()) {
        std::swap(pieces_[random_() % pieces_.size()], pieces_.back());
        const Piece piece = pieces_.back();
        pieces_.pop_back();
        // At times by another walk, as another thread has one.
        if (!walk_ || random_() % 3 == 0) walk_ = std::make_unique<Walk<R>>(tables);
        walk_->start(piece);
        walkPiece();
      }
    }

    Leaves leaves;
    int splits = 0;
    int stops = 0;
    int backs = 0;

   private:
    void walkPiece() {
      while (true) {
        walk_->pauseAt(Walk<R>::NO_CEILING, random_() % 40);
        const WalkPause pause = walk_->next();
        if (pause == WalkPause::END) return;
        const bool isLeaf = pause == WalkPause::LEAF;
        const bool isBack = isLeaf && random_() % 20 == 0;
        if (isBack) {
          walk_->takeBack();
          ++backs;
        } else if (isLeaf) {
          leaves.insert(leafOf(*walk_, rank_));
        }
        const double share = walk_->share();
        EXPECT_TRUE(share >= 0 && share < 1.01) << share;
        if (Piece other; random_() % 8 == 0 && walk_->split(other)) {
          pieces_.push_back(other);
          ++splits;
        }
        if (!isBack && random_() % 8 != 0) continue;
        pieces_.push_back(walk_->rest());
        ++stops;
        return;
      }
    }

    std::size_t rank_;
    std::mt19937 random_;
    std::vector<Piece> pieces_;
    std::unique_ptr<Walk<R>> walk_;
  };
};

using Numbers = ::testing::Types<double, Float>;
TYPED_TEST_SUITE(WalkTest, Numbers);

TYPED_TEST(WalkTest, PiecesHaveTheLeavesOfTheWhole) {
  int splits = 0;
  int stops = 0;
  int backs = 0;
  for (unsigned seed = 0; seed < 12; ++seed) {
    BoxLattice lattice = knapsack(seed);
    const auto tables = cutTablesOf<TypeParam>(lattice, this->BITS);
    ASSERT_TRUE(tables);
    const auto leaves = this->undisturbed(*tables, lattice.rank());
    ASSERT_GT(leaves.size(), 100u);
    const typename TestFixture::Disturbed disturbed(*tables, lattice.rank(), seed);
    EXPECT_EQ(disturbed.leaves, leaves) << seed;
    splits += disturbed.splits;
    stops += disturbed.stops;
    backs += disturbed.backs;
  }
  EXPECT_GT(splits, 100);
  EXPECT_GT(stops, 100);
  EXPECT_GT(backs, 100);
}

TYPED_TEST(WalkTest, SmallLatticesToo) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    testing::SmallLattice small(seed, 4, 5);
    const auto tables = cutTablesOf<TypeParam>(small.lattice, this->BITS);
    if (!tables) continue;
    const auto leaves = this->undisturbed(*tables, small.lattice.rank());
    const typename TestFixture::Disturbed disturbed(*tables, small.lattice.rank(), seed);
    EXPECT_EQ(disturbed.leaves, leaves) << seed;
  }
}

// Written by hand: half-lines that begin beyond the range, or behind the centre, and choices out of it.
TYPED_TEST(WalkTest, FarCandidatesAreNoLongWay) {
  Integer farthest = 1;
  mpz_ui_pow_ui(farthest.get_mpz_t(), 10, 400);
  BoxLattice lattice = knapsack(1);
  const auto tables = cutTablesOf<TypeParam>(lattice, this->BITS);
  ASSERT_TRUE(tables);
  const std::size_t rank = lattice.rank();
  const auto leaves = this->undisturbed(*tables, rank);
  for (const Integer& far : {Integer(1'000'000'000'000), farthest}) {
    for (const auto& [piece, hasAll] :
         {std::pair(Piece{{0, -far, 0, false, true}}, true), std::pair(Piece{{0, 0, far, true, false}}, true),
          std::pair(Piece{{0, far + 1, far, false, false}}, true),
          std::pair(Piece{{0, -far, -far - 1, false, false}}, true),
          std::pair(Piece{{0, far, -far, false, false}}, false),
          std::pair(Piece{{far, 0, 0, true, true}, {0, 1, 0, false, false}}, false)}) {
      Walk<TypeParam> walk(*tables);
      walk.start(piece);
      std::multiset<IntegerVector> found;
      int pauses = 0;
      for (WalkPause pause = walk.next(); pause != WalkPause::END; pause = walk.next()) {
        if (pause == WalkPause::LEAF) found.insert(this->leafOf(walk, rank));
        pauses += pause == WalkPause::LOOK ? 1 : 0;
        ASSERT_LT(pauses, 1000);
        walk.rest();
      }
      EXPECT_EQ(found, hasAll ? leaves : typename TestFixture::Leaves());
    }
  }
}

// Its only leaf came twice when a run that had stopped at it went on.
TYPED_TEST(WalkTest, TheLeafOfRankZeroIsVisitedOnce) {
  BoxLattice lattice;
  lattice.fixed = testing::vectorOf({5});
  const auto tables = cutTablesOf<TypeParam>(lattice, this->BITS);
  ASSERT_TRUE(tables);
  Walk<TypeParam> walk(*tables);
  walk.start({});
  const Piece whole = walk.rest();
  EXPECT_EQ(walk.next(), WalkPause::LEAF);
  const Piece nothing = walk.rest();
  walk.takeBack();
  const Piece again = walk.rest();
  for (const Piece& piece : {whole, again}) {
    walk.start(piece);
    EXPECT_EQ(walk.next(), WalkPause::LEAF);
    EXPECT_EQ(walk.next(), WalkPause::END);
  }
  walk.start(nothing);
  EXPECT_EQ(walk.next(), WalkPause::END);
}

// The share of a level with its candidates at 10^19, where adding 1 changes nothing, was never done.
TEST(Walk, TheShareOfFarCandidatesIsToldToo) {
  const Integer width("100000000000000000000");
  BoxLattice lattice;
  lattice.fixed.resize(1);
  lattice.variables = {0};
  lattice.point = testing::vectorOf({0});
  lattice.basis = {testing::vectorOf({1})};
  lattice.low = testing::vectorOf({0});
  lattice.high = {width};
  const auto tables = cutTablesOf<Float>(lattice, 512);
  ASSERT_TRUE(tables);
  Walk<Float> walk(*tables);
  const Integer far = width / 10;
  walk.start({{0, far + 1, far, false, false}});
  EXPECT_EQ(walk.next(), WalkPause::LEAF);
  EXPECT_EQ(walk.lambda()[0], Float(far));
  EXPECT_GE(walk.share(), 0);
}

}  // namespace
}  // namespace latbox::complete
