#include "complete/solving/closing.h"

#include "complete/lattice/elimination.h"
#include "complete/linear/linear_program.h"
#include "complete/program/presolve.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::rowOf;

IntegerProgram openProgram(std::size_t variables, std::vector<Row> rows) {
  return {std::vector<Range>(variables), std::move(rows)};
}

bool close(IntegerProgram& program) {
  return tighten(program) && closeByRows(program);
}

TEST(CloseByRows, ClosesWhatOnlySeveralRowsBound) {
  IntegerProgram program = openProgram(2, {rowOf({1, 1}, 0, 4), rowOf({1, -1}, 0, 3)});
  ASSERT_TRUE(close(program));
  EXPECT_EQ(*program.box[0].low, 0);
  EXPECT_EQ(*program.box[0].high, 3);
  EXPECT_EQ(*program.box[1].low, -1);
  EXPECT_EQ(*program.box[1].high, 2);
}

TEST(CloseByRows, LeavesOpenWhatHasNoBound) {
  IntegerProgram program = openProgram(2, {rowOf({1, -1}, 0, 3)});
  ASSERT_TRUE(close(program));
  EXPECT_EQ(openVariables(program).size(), 2u);
}

TEST(CloseByRows, ClosesManyVariablesByOneQuestion) {
  // Each variable open on one side; only both rows together bound anything.
  IntegerProgram program = openProgram(3, {rowOf({1, -2, 1}, 0, 0), rowOf({1, 3, -5}, std::nullopt, 7)});
  for (Range& range : program.box) range.low = 0;
  program.rows.push_back(rowOf({-1, 1, 1}, std::nullopt, 4));
  const IntegerProgram before = program;
  ASSERT_TRUE(close(program));
  LinearProgram relaxation(before);
  for (std::size_t j = 0; j < 3; ++j)
    EXPECT_LE(*program.box[j].high, floorOf(*relaxation.greatest(j, 1))) << j;
  for (long code = 0; code < 8000; ++code) {
    const IntegerVector z = testing::vectorOf({code % 20, code / 20 % 20, code / 400});
    bool isPoint = true;
    for (const Row& row : before.rows)
      isPoint = isPoint && innerProduct(row.a, z) <= *row.range.high &&
                (!row.range.low || innerProduct(row.a, z) >= *row.range.low);
    for (std::size_t j = 0; isPoint && j < 3; ++j) EXPECT_LE(z[j], *program.box[j].high) << j;
  }
}

TEST(CloseByRows, FindsDivisibilityOfWhatTheRowsImply) {
  // x - y is 1/2 in all rational points, as no row alone says; with the sides 0 and 0 it is 0.
  const auto rows = [](long side) {
    return std::vector<Row>{rowOf({2, -2, 1}, side, std::nullopt), rowOf({-2, 2, 1}, -side, std::nullopt),
                            rowOf({0, 0, 1}, std::nullopt, 0)};
  };
  IntegerProgram odd = openProgram(3, rows(1));
  EXPECT_FALSE(close(odd));
  IntegerProgram even = openProgram(3, rows(0));
  EXPECT_TRUE(close(even));
}

TEST(CloseByRows, FindsContradictionsOverTheRationals) {
  IntegerProgram program =
      openProgram(3, {rowOf({1, 1, 0}, 3, std::nullopt), rowOf({0, -1, 1}, 4, std::nullopt),
                      rowOf({1, 0, 1}, std::nullopt, 6)});
  EXPECT_FALSE(close(program));
}

TEST(CloseByRows, FindsContradictionsByJointDivisibility) {
  IntegerProgram program = openProgram(3, {rowOf({1, 1, 2}, 0, 0), rowOf({1, -1, 4}, 1, 1)});
  EXPECT_FALSE(close(program));
  IntegerProgram even = openProgram(3, {rowOf({1, 1, 2}, 0, 0), rowOf({1, -1, 4}, 2, 2)});
  EXPECT_TRUE(close(even));
}

}  // namespace
}  // namespace latbox::complete
