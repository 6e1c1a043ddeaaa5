#include <gtest/gtest.h>

#include "lattice/support.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::matrixOf;
using testing::setBasis;
using testing::shown;

template <class T>
class Dependencies : public ::testing::Test {};
TYPED_TEST_SUITE(Dependencies, testing::NumberTypes);

TYPED_TEST(Dependencies, AnIndependentBasisStaysUntouched) {
  Lattice<TypeParam, dbl_t> lattice;
  setBasis(lattice, matrixOf<TypeParam>({{2, 0, 1}, {0, 3, 1}}));
  lattice.updateGso(1, 0);
  const Array<short> status = lattice.status;
  EXPECT_EQ(lattice.removeDependentVectors(), 0);
  EXPECT_EQ(shown(lattice.B), "[ 2 0 1 ][ 0 3 1 ]");
  for (long i = 1; i <= 2; ++i) EXPECT_EQ(lattice.status[i], status[i]);
}

TYPED_TEST(Dependencies, DependentVectorsGoAndTheLatticeFitsWhatIsLeft) {
  using T = TypeParam;
  Lattice<T, dbl_t> lattice;
  setBasis(lattice, matrixOf<T>({{2, 0, 1}, {3, 0, 1}, {5, 0, 2}, {0, 0, 0}, {0, 4, 0}}));
  lattice.homogeneousVectors.append(HeuristicVector<T, dbl_t>());
  lattice.inhomogeneousVectors.append(HeuristicVector<T, dbl_t>());
  EXPECT_EQ(lattice.removeDependentVectors(), 2);
  EXPECT_EQ(lattice.rank, 3);
  EXPECT_EQ(lattice.dim, 3);
  EXPECT_EQ(shown(lattice.B), "[ 2 0 1 ][ 3 0 1 ][ 0 4 0 ]");
  EXPECT_EQ(shown(lattice.B_save), shown(lattice.B));
  ASSERT_EQ(lattice.TT.MN, 1);
  EXPECT_EQ(shown(lattice.TT[1]), shown(Matrix<T>::unit(3)));
  ASSERT_EQ(lattice.status.MN, 3);
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(lattice.status[i], 0);
  EXPECT_EQ(lattice.mu.M, 3);
  EXPECT_EQ(lattice.bNormSq.MN, 3);
  EXPECT_EQ(lattice.homogeneousVectors.count + lattice.inhomogeneousVectors.count, 0);
  EXPECT_TRUE(lattice.updateGso(1, 0));
  EXPECT_EQ(lattice.removeDependentVectors(), 0);
}

// The basis is looked at in unit coordinates; its weights stay in force.
TYPED_TEST(Dependencies, WeightsStayInForce) {
  using T = TypeParam;
  Lattice<T, dbl_t> lattice;
  setBasis(lattice, matrixOf<T>({{2, 1}, {4, 2}, {0, 1}}));
  lattice.setScale(1, T(3));
  EXPECT_EQ(lattice.removeDependentVectors(), 1);
  EXPECT_EQ(shown(lattice.B_save), "[ 2 1 ][ 0 1 ]");
  EXPECT_EQ(shown(lattice.B), "[ 6 1 ][ 0 1 ]");
}

TYPED_TEST(Dependencies, ARationalDependencyKeepsTheLattice) {
  using T = TypeParam;
  Lattice<T, dbl_t> lattice;
  setBasis(lattice, matrixOf<T>({{2, 0}, {3, 0}}));
  (void)lattice.isMember(Vector<T>("[ 1 0 ]"));  // a cache of the rows as they were
  Vector<T> x;
  (void)lattice.coordinates(Vector<T>("[ 1 0 ]"), x, false);
  EXPECT_EQ(lattice.removeDependentVectors(), 1);
  EXPECT_EQ(shown(lattice.B), "[ 1 0 ]");
  EXPECT_TRUE(lattice.isMember(Vector<T>("[ 1 0 ]")));
  EXPECT_FALSE(lattice.isMember(Vector<T>("[ 0 1 ]")));
  ASSERT_TRUE(lattice.coordinates(Vector<T>("[ 3 0 ]"), x, false));
  EXPECT_EQ(shown(x), "[ 3 ]");
}

}  // namespace
}  // namespace latbox
