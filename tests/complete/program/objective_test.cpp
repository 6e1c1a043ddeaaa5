#include "complete/program/objective.h"

#include "complete/lattice/elimination.h"
#include "support.h"

namespace latbox::complete {
namespace {

// Three variables; what the rows of a bound leave is compared with the target norm itself, over a whole box.
class ObjectiveTest : public ::testing::TestWithParam<std::vector<const char*>> {
 protected:
  Program program() const {
    Program program;
    const long coefficients[][3] = {{1, -2, 3}, {2, 1, -1}, {-1, 4, 0}};
    for (std::size_t i = 0; i < GetParam().size(); ++i) {
      const std::string wanted = GetParam()[i];
      program.wanted.push_back(wanted == "min"   ? Number{-1, 0}
                               : wanted == "max" ? Number{1, 0}
                                                 : Number{0, parseRational(wanted)});
      program.targets.emplace_back();
      for (const long a : coefficients[i]) program.targets.back().emplace_back(a, 2);
      for (Rational& a : program.targets.back()) a.canonicalize();
    }
    program.digits.assign(3, 0);
    program.lower.assign(3, Number{0, -2});
    program.upper.assign(3, Number{0, 2});
    return program;
  }

  static bool keeps(const std::vector<Row>& rows, const IntegerVector& z) {
    for (const Row& row : rows) {
      const Integer value = innerProduct(row.a, z);
      if ((row.range.low && value < *row.range.low) || (row.range.high && value > *row.range.high))
        return false;
    }
    return true;
  }
};

TEST_P(ObjectiveTest, RowsSayWhatTheBoundSays) {
  const Program p = program();
  const Objective objective(p);
  const Norms bound = normsOf(p, pointOf(p, testing::vectorOf({1, 0, -1})));
  std::size_t better = 0;
  for (long code = 0; code < 125; ++code) {
    const IntegerVector z = testing::vectorOf({code % 5 - 2, code / 5 % 5 - 2, code / 25 - 2});
    const Norms norms = normsOf(p, pointOf(p, z));
    EXPECT_EQ(keeps(objective.rows(objective.valueOf(bound)), z), norms.target <= bound.target) << code;
    EXPECT_EQ(keeps(objective.rows(objective.valueOf(bound) - 1), z), norms.target < bound.target) << code;
    better += norms.target < bound.target ? 1 : 0;
  }
  EXPECT_GT(better, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ObjectiveTest,
    ::testing::Values(std::vector<const char*>{"min"}, std::vector<const char*>{"max", "min"},
                      std::vector<const char*>{"1/3"}, std::vector<const char*>{"2", "-1"},
                      std::vector<const char*>{"min", "1/2"}, std::vector<const char*>{"max", "1", "-5/3"},
                      std::vector<const char*>{"0", "1", "2"}));

}  // namespace
}  // namespace latbox::complete
