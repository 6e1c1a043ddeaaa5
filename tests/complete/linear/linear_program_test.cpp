#include "complete/linear/linear_program.h"

#include <random>

#include "complete/lattice/elimination.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

TEST(LinearProgramTest, FindsTheGreatestValue) {
  const IntegerProgram program{{Range{}, Range{}}, {rowOf({1, 2}, std::nullopt, 4), rowOf({3, -1}, 0, 5)}};
  LinearProgram relaxation(program);
  ASSERT_TRUE(relaxation.isFeasible());
  EXPECT_EQ(relaxation.greatest(0, 1), Rational(2));
  EXPECT_EQ(relaxation.greatest(1, 1), Rational(12, 7));
  EXPECT_EQ(relaxation.greatest(1, -1), std::nullopt);
  // Of rows too.
  EXPECT_EQ(relaxation.greatest(2, 1), Rational(4));
  EXPECT_EQ(relaxation.greatest(3, -1), Rational(0));
}

TEST(LinearProgramTest, FindsInfeasibility) {
  const IntegerProgram program{{Range{}, Range{}},
                               {rowOf({2, -2}, 1, std::nullopt), rowOf({1, -1}, std::nullopt, 0)}};
  EXPECT_FALSE(LinearProgram(program).isFeasible());
}

// Beale's example cycles by the rule of the greatest coefficient.
TEST(LinearProgramTest, DoesNotCycle) {
  const IntegerProgram program{
      {{Integer(0), {}}, {Integer(0), {}}, {Integer(0), {}}, {Integer(0), {}}, Range{}},
      {rowOf({25, -6000, -4, 900, 0}, std::nullopt, 0), rowOf({50, -9000, -2, 300, 0}, std::nullopt, 0),
       rowOf({0, 0, 1, 0, 0}, std::nullopt, 100), rowOf({75, -15000, 2, -600, -100}, 0, 0)}};
  LinearProgram relaxation(program);
  ASSERT_TRUE(relaxation.isFeasible());
  EXPECT_EQ(relaxation.greatest(4, 1), Rational(5));
}

// Three variables and some rows, whose vertices can be listed.
class RandomRelaxation {
 public:
  explicit RandomRelaxation(unsigned seed) : random_(seed) {
    for (int j = 0; j < 3; ++j) program.box.push_back(range(draw(-4, 2), draw(0, 5)));
    for (long i = draw(1, 3); i > 0; --i) {
      Row row = rowOf({draw(-4, 4), draw(-4, 4), draw(-4, 4)}, {}, {});
      row.range = range(draw(-9, 6), draw(0, 5));
      program.rows.push_back(row);
    }
  }

  // The vertices, open variables being cut off so many steps from 0.
  std::vector<std::vector<Rational>> vertices(long far) const {
    IntegerMatrix planes;
    std::vector<Range> ranges;
    for (std::size_t v = 0; v < 3 + program.rows.size(); ++v) {
      planes.push_back(plane(v));
      ranges.push_back(v < 3 ? program.box[v] : program.rows[v - 3].range);
      if (v < 3 && !ranges[v].low) ranges[v].low = -far;
      if (v < 3 && !ranges[v].high) ranges[v].high = far;
    }
    std::vector<std::vector<Rational>> kept;
    for (std::vector<Rational>& z : crossings(planes, ranges))
      if (isWithin(planes, ranges, z)) kept.push_back(std::move(z));
    return kept;
  }

  // Of a variable or a row.
  Rational greatest(std::size_t variable, int sign, const std::vector<std::vector<Rational>>& at) const {
    Rational best = sign * product(plane(variable), at.front());
    for (const std::vector<Rational>& z : at)
      best = std::max(best, Rational(sign * product(plane(variable), z)));
    return best;
  }

  IntegerProgram program;

 private:
  IntegerVector plane(std::size_t variable) const {
    if (variable >= 3) return program.rows[variable - 3].a;
    IntegerVector unit(3);
    unit[variable] = 1;
    return unit;
  }

  static Rational product(const IntegerVector& a, const std::vector<Rational>& z) {
    return Rational(a[0] * z[0] + a[1] * z[1] + a[2] * z[2]);
  }

  static bool isWithin(const IntegerMatrix& planes, const std::vector<Range>& ranges,
                       const std::vector<Rational>& z) {
    for (std::size_t v = 0; v < planes.size(); ++v) {
      const Rational value = product(planes[v], z);
      if ((ranges[v].low && value < *ranges[v].low) || (ranges[v].high && value > *ranges[v].high))
        return false;
    }
    return true;
  }

  static std::vector<std::vector<Rational>> crossings(const IntegerMatrix& planes,
                                                      const std::vector<Range>& ranges) {
    std::vector<std::pair<IntegerVector, Integer>> ends;
    for (std::size_t v = 0; v < planes.size(); ++v)
      for (const auto& end : {ranges[v].low, ranges[v].high})
        if (end) ends.emplace_back(planes[v], *end);
    std::vector<std::vector<Rational>> found;
    for (std::size_t a = 0; a < ends.size(); ++a)
      for (std::size_t b = 0; b < a; ++b)
        for (std::size_t c = 0; c < b; ++c) {
          const IntegerMatrix square{ends[a].first, ends[b].first, ends[c].first};
          if (determinant(square) != 0)
            found.push_back(solveSquare(square, {ends[a].second, ends[b].second, ends[c].second}));
        }
    return found;
  }

  // Open on either side now and then.
  Range range(long low, long width) {
    Range range = rangeOf(low, low + width);
    if (draw(0, 4) == 0) range.low.reset();
    if (draw(0, 4) == 0) range.high.reset();
    return range;
  }

  long draw(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

  std::mt19937 random_;
};

TEST(LinearProgramTest, FindsTheBestVertex) {
  std::size_t infeasible = 0;
  std::size_t unbounded = 0;
  std::size_t bounded = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    const RandomRelaxation random(seed);
    LinearProgram relaxation(random.program);
    const auto near = random.vertices(1000);
    const auto far = random.vertices(2000);
    ASSERT_EQ(relaxation.isFeasible(), !near.empty()) << seed;
    infeasible += near.empty() ? 1 : 0;
    for (std::size_t v = 0; !near.empty() && v < 3 + random.program.rows.size(); ++v)
      for (const int sign : {1, -1}) {
        const auto most = relaxation.greatest(v, sign);
        const Rational value = random.greatest(v, sign, near);
        EXPECT_TRUE(most ? *most == value : value < random.greatest(v, sign, far)) << seed;
        ++(most ? bounded : unbounded);
      }
  }
  EXPECT_GT(infeasible, 50u);
  EXPECT_GT(unbounded, 100u);
  EXPECT_GT(bounded, 1000u);
}

}  // namespace
}  // namespace latbox::complete
