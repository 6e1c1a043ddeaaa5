#include "complete/closing.h"

#include "complete/presolve.h"
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
