#include "complete/tree/pass_tables.h"

#include "market_split.h"

namespace latbox::complete {
namespace {

using testing::marketSplit;

class PassTablesOf : public ::testing::Test {
 protected:
  PassTablesOf() {
    IntegerProgram program = marketSplit(4, 36, 2);
    for (std::size_t j = 0; j < program.box.size(); ++j)
      program.box[j] = testing::rangeOf(0, 1 + static_cast<long>(j % 3));
    lattice = *boxLatticeOf(program);
    exact = gramSchmidtOf(lattice, 256);
    pass = passTablesOf(lattice);
  }

  BoxLattice lattice;
  GramSchmidt exact;
  PassTables pass;
};

TEST_F(PassTablesOf, TellTheShapeOfTheTree) {
  const std::size_t k = lattice.rank();
  const Descent& descent = pass.descent;
  ASSERT_EQ(descent.norms.size(), k);
  ASSERT_EQ(descent.mu.size(), k + 1);
  for (std::size_t i = 0; i < k; ++i)
    EXPECT_NEAR(descent.norms[i], exact.norms[i].get_d(), 1e-9 * descent.norms[i]);
  EXPECT_NEAR(descent.root, exact.norms[k].get_d(), 1e-9);
  for (std::size_t i = 0; i <= k; ++i)
    for (std::size_t j = 0; j < i && j < k; ++j)
      EXPECT_NEAR(descent.mu[i][j], exact.mu[i][j].get_d(), 1e-9 * (1 + std::fabs(descent.mu[i][j])));
  EXPECT_EQ(descent.coordinates, static_cast<double>(lattice.coordinates()));
}

// g K_i and g u0, as a walk adds them up.
TEST_F(PassTablesOf, HaveTheProductsOfTheirVectors) {
  const std::size_t k = lattice.rank();
  for (std::size_t t = 0; t < k; ++t) {
    const auto& level = pass.tables.levels[t];
    double sizes = 0;
    for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
      EXPECT_NEAR(level.g[j], exact.vectors[t][j].get_d(), 1e-9);
      EXPECT_FLOAT_EQ(level.weights[j], static_cast<float>(level.g[j]));
      sizes += std::fabs(level.g[j]);
    }
    EXPECT_NEAR(level.most, sizes, 1e-9);
    EXPECT_NEAR(level.inverseNorm * exact.norms[t].get_d(), 1, 1e-9);
    EXPECT_NEAR(level.products[t], exact.norms[t].get_d(), 1e-9);
    for (std::size_t i = t + 1; i < k; ++i)
      EXPECT_NEAR(level.products[i], Float(exact.mu[i][t] * exact.norms[t]).get_d(), 1e-7);
    EXPECT_NEAR(level.constant, Float(exact.mu[k][t] * exact.norms[t]).get_d(), 1e-7);
  }
  EXPECT_NEAR(pass.tables.levels[k].constant, exact.norms[k].get_d(), 1e-9);
  EXPECT_GT(pass.tables.cap, static_cast<double>(lattice.coordinates()));
}

}  // namespace
}  // namespace latbox::complete
