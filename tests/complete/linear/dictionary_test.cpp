#include "complete/linear/dictionary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace latbox::complete {
namespace {

using Matrix = std::vector<std::vector<double>>;

class RandomBasis {
 public:
  explicit RandomBasis(unsigned seed) : random_(seed) {
    const std::size_t k = 1 + random_() % 6;
    basis.assign(k, std::vector<double>(k + random_() % 5));
    for (auto& row : basis)
      for (double& entry : row) entry = draw();
  }

  double draw() { return 2 * static_cast<double>(random_()) / static_cast<double>(std::mt19937::max()) - 1; }

  Matrix basis;

 private:
  std::mt19937 random_;
};

// Whether the dictionary says the truth of a random combination of rows 0 to t.
void expectTrue(const Dictionary& dictionary, RandomBasis& random, std::size_t t, int sign) {
  const std::size_t count = random.basis.front().size();
  std::vector<double> w(count);
  double lambda = 0;
  for (std::size_t i = 0; i <= t; ++i) {
    lambda = random.draw();
    for (std::size_t j = 0; j < count; ++j) w[j] += lambda * random.basis[i][j];
  }
  ASSERT_EQ(dictionary.columns.size(), t + 1);
  ASSERT_EQ(dictionary.rows.size(), count - t - 1);
  for (std::size_t r = 0; r <= dictionary.rows.size(); ++r) {
    double value = 0;
    for (std::size_t c = 0; c <= t; ++c) value += dictionary.row(r)[c] * w[dictionary.columns[c]];
    for (std::size_t c = t + 1; c < dictionary.stride; ++c) EXPECT_EQ(dictionary.row(r)[c], 0);
    EXPECT_NEAR(value, r < dictionary.rows.size() ? w[dictionary.rows[r]] : sign * lambda, 1e-6);
  }
}

TEST(DictionaryTest, EveryLevelHasOne) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    RandomBasis random(seed);
    DictionaryBuilder builder(random.basis, random.basis.size());
    for (std::size_t t = 0; t < random.basis.size(); ++t) {
      ASSERT_TRUE(builder.addLevel());
      for (const int sign : {1, -1}) expectTrue(builder.dictionary(sign), random, t, sign);
    }
  }
}

TEST(DictionaryTest, AnExchangeKeepsItTrue) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    RandomBasis random(seed);
    const std::size_t t = random.basis.size() - 1;
    DictionaryBuilder builder(random.basis, t + 1);
    for (std::size_t i = 0; i <= t; ++i) ASSERT_TRUE(builder.addLevel());
    Dictionary dictionary = builder.dictionary(1);
    for (std::size_t r = 0; r < dictionary.rows.size(); ++r) {
      const std::size_t column = r % (t + 1);
      if (std::abs(dictionary.row(r)[column]) < 1e-2) continue;
      const std::size_t before = dictionary.rows[r];
      exchange(dictionary, r, column);
      EXPECT_EQ(dictionary.columns[column], before);
      expectTrue(dictionary, random, t, 1);
    }
  }
}

TEST(DictionaryTest, ColumnsCanBeAskedFor) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    RandomBasis random(seed);
    const std::size_t t = random.basis.size() - 1;
    std::vector<std::size_t> columns;
    for (std::size_t j = random.basis.front().size() - t - 1; j < random.basis.front().size(); ++j)
      columns.push_back(j);
    DictionaryBuilder builder(random.basis, columns);
    for (std::size_t i = 0; i <= t; ++i) ASSERT_TRUE(builder.addLevel());
    Dictionary dictionary = builder.dictionary(1);
    expectTrue(dictionary, random, t, 1);
    std::sort(dictionary.columns.begin(), dictionary.columns.end());
    EXPECT_EQ(dictionary.columns, columns);
  }
}

TEST(DictionaryTest, DependentRowsHaveNone) {
  const Matrix basis = {{1, 2, 3}, {2, 4, 6}};
  DictionaryBuilder builder(basis, 2);
  EXPECT_TRUE(builder.addLevel());
  EXPECT_FALSE(builder.addLevel());
}

}  // namespace
}  // namespace latbox::complete
